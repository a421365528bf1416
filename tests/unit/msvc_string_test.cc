#include "msvc/msvc_string.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/process_heap.h"

namespace stream {
namespace {

constexpr std::size_t kInside = 15;          // characters that need no block
constexpr std::size_t kFirstAligned = 4095;  // the smallest capacity of an aligned block

std::string Letters(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

// The address that is stored before an aligned block: the result of the heap's allocation.
std::uintptr_t StoredAddress(const msvc::String& string) {
  std::uintptr_t address = 0;
  std::memcpy(&address, string.content.block - sizeof(address), sizeof(address));
  return address;
}

// Makes a string as a host does, with a capacity of its choice.
msvc::String MakeRoomyString(const std::string& text, std::size_t capacity) {
  msvc::String string{};
  string.size = text.size();
  string.capacity = capacity;
  if (capacity + 1 < 4096) {
    string.content.block = static_cast<char*>(platform::AllocateFromProcessHeap(capacity + 1));
  } else {
    void* const memory = platform::AllocateFromProcessHeap(capacity + 1 + 39);
    const auto address = (reinterpret_cast<std::uintptr_t>(memory) + 39) / 32 * 32;
    string.content.block = reinterpret_cast<char*>(address);
    std::memcpy(string.content.block - sizeof(memory), &memory, sizeof(memory));
  }
  std::memcpy(string.content.block, text.c_str(), text.size() + 1);
  return string;
}

TEST(MsvcStringTest, TextOfAnyLengthIsKeptAndZeroTerminated) {
  for (const std::size_t length : {0U, 1U, 15U, 16U, 31U, 32U, 4094U, 4095U, 4096U, 65'536U}) {
    const std::string text = Letters(length);
    msvc::String string = msvc::MakeString(text);
    EXPECT_EQ(msvc::TextOf(string), text);
    EXPECT_EQ(msvc::TextOf(string).data()[length], '\0');
    msvc::Destroy(string);
  }
}

TEST(MsvcStringTest, ZerosInsideATextAreKept) {
  const std::string text("a\0b\0", 4);
  msvc::String string = msvc::MakeString(text);
  EXPECT_EQ(msvc::TextOf(string), text);
  msvc::Destroy(string);
}

TEST(MsvcStringTest, CapacityIsAMultipleOf16MinusOne) {
  for (const std::size_t length : {16U, 31U, 32U, 47U, 4095U, 4096U, 100'000U}) {
    msvc::String string = msvc::MakeString(Letters(length));
    EXPECT_EQ(string.size, length);
    EXPECT_EQ(string.capacity, length / 16 * 16 + 15);
    msvc::Destroy(string);
  }
}

TEST(MsvcStringTest, FifteenCharactersAreStoredInside) {
  const msvc::String string = msvc::MakeString(Letters(kInside));
  EXPECT_EQ(string.capacity, kInside);
  EXPECT_EQ(msvc::TextOf(string).data(), string.content.inside);
}

TEST(MsvcStringTest, BlockOf4096BytesIsAlignedAndPrecededByTheAddressOfItsMemory) {
  for (const std::size_t capacity : {kFirstAligned, kFirstAligned + 16, std::size_t{65'535}}) {
    msvc::String string = msvc::MakeString(Letters(capacity));
    const auto block = reinterpret_cast<std::uintptr_t>(string.content.block);
    EXPECT_EQ(block % 32, 0U);
    EXPECT_GE(block - StoredAddress(string), sizeof(void*));
    EXPECT_LE(block - StoredAddress(string), 39U);
    msvc::Destroy(string);
  }
}

TEST(MsvcStringTest, HostStringWithSpareCapacityIsReadAndReleased) {
  for (const std::size_t capacity : {16U, 31U, 40U, 4094U, 4095U, 4096U, 5000U}) {
    for (const std::size_t length : {0U, 3U, 16U}) {
      msvc::String string = MakeRoomyString(Letters(length), capacity);
      EXPECT_EQ(msvc::TextOf(string), Letters(length));
      msvc::Destroy(string);
    }
  }
}

}  // namespace
}  // namespace stream
