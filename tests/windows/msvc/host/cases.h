// What this host does with the library. A case ends the process with status 1 if something is
// wrong.
#ifndef TESTS_MSVC_CASES_H_
#define TESTS_MSVC_CASES_H_

#include <string>

// --- Members of the facade (facade_cases.cc) ---
void MembersAnswerWhileNothingPlays();
void NullPlayerIsSilent();
void AssignedFacadeUsesThePlayerOfTheOther();
void PlayerThatIsTheSecondBaseIsCalled();
void DestructionStopsWhatPlays();
void ZeroFillIsReached();

// --- Strings that cross the boundary (string_cases.cc) ---
void AddressesOfAllLengthsAreEchoed();
void ZerosInsideAnAddressAreEchoed();
void MovedAndRoomyStringsAreEchoed();
void CallsLeaveNoHeapBlock();

// --- Streams (stream_cases.cc); `address` is the address of the stream ---
void PrintFrames(std::uint64_t count, const std::string& address);
void SeekStartsAtThePosition(const std::string& address);
void StopEndsTheCalls(const std::string& address);
void MissingFileIsReportedInBothWays(const std::string& address);

// --- Players of GCC in the same process (gcc_cases.cc) ---
void PlayersOfBothCompilersAlternate(const std::string& address);
void GccPlayerAtTheAddressOfAnother();

#endif  // TESTS_MSVC_CASES_H_
