#include <stream_downloader.h>

#include "cases.h"
#include "echo.h"
#include "recorder.h"
#include "report.h"

namespace {

// No two adjacent characters are equal.
std::string TextOf(std::size_t length) {
  std::string text(length, 'a');
  auto* const bytes = const_cast<char*>(text.data());
  for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<char>('a' + i % 26);
  return text;
}

void ExpectEchoes(std::size_t first, std::size_t last) {
  Recorder player;
  CStreamDownloader facade(&player);
  for (std::size_t length = first; length <= last; ++length) {
    ExpectEcho(facade, player, TextOf(length));
    ExpectValidHeap();
  }
}

}  // namespace

void AddressesOfAllLengthsAreEchoed() {
  ExpectEchoes(1, 70);
  ExpectEchoes(4060, 4140);
  ExpectEchoes(65'536, 65'536);
  ExpectEchoes(1'000'000, 1'000'000);
}

void ZerosInsideAnAddressAreEchoed() {
  Recorder player;
  CStreamDownloader facade(&player);
  ExpectEcho(facade, player, std::string("a\0b", 3));
  ExpectEcho(facade, player, std::string(40, '\0'));
  ExpectEcho(facade, player, std::string(5000, '\0') + TextOf(3));
  ExpectValidHeap();
}

void MovedAndRoomyStringsAreEchoed() {
  constexpr std::size_t kCapacities[] = {16, 31, 40, 4094, 4095, 4096, 5000};
  Recorder player;
  CStreamDownloader facade(&player);
  for (const std::size_t capacity : kCapacities) {
    std::string roomy = TextOf(3);
    roomy.reserve(capacity);
    ExpectEcho(facade, player, static_cast<std::string&&>(roomy));
    roomy += "what was moved from is used again";
    ExpectEcho(facade, player, roomy);
    ExpectValidHeap();
  }
}

void CallsLeaveNoHeapBlock() {
  constexpr int kCalls = 9000;
  constexpr std::size_t kLengths[] = {1, 20, 5000};
  Recorder player;
  CStreamDownloader facade(&player);
  const auto call = [&](int count) {
    for (int i = 0; i < count; ++i) facade.BeginDownload(TextOf(kLengths[i % 3]));
    player.Forget();
  };
  call(100);  // for one-time allocations
  const std::uint64_t before = HeapBlocks();
  Expect(before > 0, "the heap cannot be walked");
  call(kCalls);
  const std::uint64_t after = HeapBlocks();
  if (after != before) Fail(Decimal(before) + " heap blocks became " + Decimal(after));
  ExpectValidHeap();
}
