// Whether each allocation is a heap block of its own, instead of a part of shared memory or pages
// from the system. Set with the address sanitizer, so that it detects overruns and leaks of each
// block.
#ifndef COMMON_SEPARATE_BLOCKS_H_
#define COMMON_SEPARATE_BLOCKS_H_

namespace stream {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSeparateBlocks = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kSeparateBlocks = true;
#else
inline constexpr bool kSeparateBlocks = false;
#endif
#else
inline constexpr bool kSeparateBlocks = false;
#endif

}  // namespace stream

#endif  // COMMON_SEPARATE_BLOCKS_H_
