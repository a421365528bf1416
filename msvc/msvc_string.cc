#include "msvc/msvc_string.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "platform/process_heap.h"

namespace stream::msvc {
namespace {

constexpr std::size_t kCapacityStep = 16;       // each capacity is a multiple of this, minus one
constexpr std::size_t kSmallestAligned = 4096;  // blocks of this size or larger are aligned
constexpr std::size_t kAlignment = 32;
constexpr std::size_t kAlignmentOverhead = sizeof(void*) + kAlignment - 1;

void* Allocate(std::size_t size) {
  void* const memory = platform::AllocateFromProcessHeap(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

char* AllocateBlock(std::size_t size) {
  if (size < kSmallestAligned) return static_cast<char*>(Allocate(size));
  auto* const memory = static_cast<char*>(Allocate(size + kAlignmentOverhead));
  char* block = memory + kAlignmentOverhead;
  block -= reinterpret_cast<std::uintptr_t>(block) % kAlignment;
  std::memcpy(block - sizeof(memory), &memory, sizeof(memory));
  return block;
}

void ReleaseBlock(char* block, std::size_t size) {
  char* memory = block;
  if (size >= kSmallestAligned) std::memcpy(&memory, block - sizeof(memory), sizeof(memory));
  platform::ReleaseToProcessHeap(memory);
}

bool HasBlock(const String& string) { return string.capacity >= String::kInside; }

}  // namespace

String MakeString(std::string_view text) {
  String string{};
  string.size = text.size();
  string.capacity = text.size() | (kCapacityStep - 1);
  char* content = string.content.inside;
  if (HasBlock(string)) {
    content = AllocateBlock(string.capacity + 1);
    string.content.block = content;
  }
  std::memcpy(content, text.data(), text.size());
  content[text.size()] = '\0';
  return string;
}

std::string_view TextOf(const String& string) {
  return {HasBlock(string) ? string.content.block : string.content.inside, string.size};
}

void Destroy(String& string) {
  if (HasBlock(string)) ReleaseBlock(string.content.block, string.capacity + 1);
}

}  // namespace stream::msvc
