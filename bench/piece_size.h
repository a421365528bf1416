#ifndef BENCH_PIECE_SIZE_H_
#define BENCH_PIECE_SIZE_H_

#include <cstdint>

// The most that libcurl passes to a write callback.
inline constexpr std::uint32_t kPieceSize = 16384;

#endif  // BENCH_PIECE_SIZE_H_
