// Whether memory that is otherwise shared or taken straight from the system is made of heap blocks,
// one for each user: the address sanitizer is to see the end of each, and its leak.
#ifndef COMMON_SEPARATE_BLOCKS_H_
#define COMMON_SEPARATE_BLOCKS_H_

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

#endif  // COMMON_SEPARATE_BLOCKS_H_
