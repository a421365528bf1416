// std::string as release builds of Visual C++ 2015 and later lay it out.
//
// A string by value crosses the boundary as a pointer to a copy, which the callee destroys. So the
// argument of BeginDownload is destroyed here, and a line that is sent to a player is destroyed by
// the player.
//
// A block of up to 4,095 bytes, the terminating zero included, is allocated as it is. A larger one
// is aligned to 32 bytes inside an allocation that is 39 bytes larger, whose address is stored in
// the eight bytes before the block.
#ifndef MSVC_MSVC_STRING_H_
#define MSVC_MSVC_STRING_H_

#include <cstddef>
#include <string_view>

namespace msvc {

struct String {
  static constexpr std::size_t kInside = 16;  // bytes that need no block, the zero included

  union Content {
    char inside[kInside];
    char* block;  // where the capacity is kInside or more
  };

  Content content;
  std::size_t size;
  std::size_t capacity;  // without the terminating zero
};

static_assert(sizeof(String) == 32, "the layout is a binary contract");
static_assert(offsetof(String, size) == 16, "the layout is a binary contract");
static_assert(offsetof(String, capacity) == 24, "the layout is a binary contract");

// A string of the same bytes, zeros included. Its memory belongs to the caller, who hands it to a
// callee that destroys it. Throws std::bad_alloc.
String MakeString(std::string_view text);

// The bytes of a string, valid until it is destroyed.
std::string_view TextOf(const String& string);

// What the destructor does. The object itself belongs to the caller.
void Destroy(String& string);

}  // namespace msvc

#endif  // MSVC_MSVC_STRING_H_
