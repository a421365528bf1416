// std::string in the layout of release builds of Visual C++ 2015 and later.
//
// A string by value is passed as a pointer to a copy, which the callee destroys. So this library
// destroys the argument of BeginDownload, and a player destroys a line that is sent to it.
//
// A block of at most 4,095 bytes, including the terminating zero, is an ordinary allocation. A
// larger block is aligned to 32 bytes within an allocation that is 39 bytes larger. The address of
// that allocation is stored in the eight bytes before the block.
#ifndef MSVC_MSVC_STRING_H_
#define MSVC_MSVC_STRING_H_

#include <cstddef>
#include <string_view>

namespace stream::msvc {

struct String {
  // The number of bytes stored without a block, including the terminating zero.
  static constexpr std::size_t kInside = 16;

  union Content {
    char inside[kInside];
    char* block;  // used if the capacity is kInside or more
  };

  Content content;
  std::size_t size;
  std::size_t capacity;  // without the terminating zero
};

static_assert(sizeof(String) == 32, "the layout is a binary contract");
static_assert(offsetof(String, size) == 16, "the layout is a binary contract");
static_assert(offsetof(String, capacity) == 24, "the layout is a binary contract");

// Makes a string with a copy of these bytes, which may contain zeros. The caller owns its memory
// and passes it to a callee that destroys it. Throws std::bad_alloc.
String MakeString(std::string_view text);

// Returns the bytes of a string, valid until the string is destroyed.
std::string_view TextOf(const String& string);

// Releases the memory of a string, as its destructor does. The caller owns the object itself.
void Destroy(String& string);

}  // namespace stream::msvc

#endif  // MSVC_MSVC_STRING_H_
