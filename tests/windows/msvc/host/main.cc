// main CASE [ARGUMENT...]: runs a case of cases.h and prints "passed".
#include "cases.h"
#include "report.h"
#include "watched_releases.h"

namespace {

// Removes the first word and returns it.
std::string NextWord(const char*& text) {
  const char* const begin = text;
  while (*text != 0 && *text != ' ') ++text;
  const std::string word(begin, static_cast<std::size_t>(text - begin));
  while (*text == ' ') ++text;
  return word;
}

std::uint64_t NumberOf(const std::string& word) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < word.size(); ++i) {
    number = number * 10 + static_cast<std::uint64_t>(word.data()[i] - '0');
  }
  return number;
}

struct Plain {
  const char* name;
  void (*run)();
};
constexpr Plain kPlain[] = {
    {"members", MembersAnswerWhileNothingPlays},
    {"null_player", NullPlayerIsSilent},
    {"assignment", AssignedFacadeUsesThePlayerOfTheOther},
    {"another_base", PlayerThatIsTheSecondBaseIsCalled},
    {"destruction", DestructionStopsWhatPlays},
    {"zero_fill", ZeroFillIsReached},
    {"lengths", AddressesOfAllLengthsAreEchoed},
    {"zeros", ZerosInsideAnAddressAreEchoed},
    {"moved_and_roomy", MovedAndRoomyStringsAreEchoed},
    {"heap_blocks", CallsLeaveNoHeapBlock},
    {"same_address", GccPlayerAtTheAddressOfAnother},
};

struct Streaming {
  const char* name;
  void (*run)(const std::string& address);
};
constexpr Streaming kStreaming[] = {
    {"seek", SeekStartsAtThePosition},
    {"stop", StopEndsTheCalls},
    {"missing_file", MissingFileIsReportedInBothWays},
    {"both_kinds", PlayersOfBothCompilersAlternate},
};

bool Run(const char* arguments) {
  const std::string name = NextWord(arguments);
  for (const Plain& one : kPlain) {
    if (name == one.name) return one.run(), true;
  }
  for (const Streaming& one : kStreaming) {
    if (name == one.name) return one.run(arguments), true;
  }
  if (name != "frames") return false;
  const std::uint64_t count = NumberOf(NextWord(arguments));
  return PrintFrames(count, arguments), true;
}

}  // namespace

int Main(const char* arguments) {
  WatchReleases();
  if (!Run(arguments)) Fail("there is no such case");
  Print("passed");
  return 0;
}
