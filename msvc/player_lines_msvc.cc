// Sends lines to players of this library's own compiler and to players of Visual C++. The
// constructor that created a facade shows which compiler compiled its player.
#include <cstddef>
#include <cstring>

#include "common/player_lines.h"
#include "msvc/msvc_string.h"
#include "msvc/players.h"

namespace stream {
namespace {

// Slots in the player's virtual table: a binary contract.
constexpr std::size_t kOnMessage = 10;
constexpr std::size_t kOnPlayResult = 11;

using LineOperation = void (*)(CStreamPlayerImp* player, msvc::String* line);

LineOperation OperationOf(const CStreamPlayerImp& player, std::size_t slot) {
  const LineOperation* table = nullptr;  // the first field of an object with virtual operations
  std::memcpy(&table, static_cast<const void*>(&player), sizeof(table));
  return table[slot];
}

void Send(CStreamPlayerImp& player, std::size_t slot, const std::string& line) {
  // Visual C++ aligns arguments that it passes by address to 16 bytes.
  alignas(16) msvc::String copy = msvc::MakeString(line);
  OperationOf(player, slot)(&player, &copy);  // destroys the copy
}

void CallOnMessage(CStreamPlayerImp& player,
                   std::string line) {  // NOLINT(performance-unnecessary-value-param)
  Send(player, kOnMessage, line);
}

void CallOnPlayResult(CStreamPlayerImp& player,
                      std::string line) {  // NOLINT(performance-unnecessary-value-param)
  Send(player, kOnPlayResult, line);
}

constexpr PlayerLines kMsvcPlayerLines = {CallOnMessage, CallOnPlayResult};

}  // namespace

const PlayerLines& PlayerLinesFor(const CStreamPlayerImp* player) {
  return msvc::IsPlayer(player) ? kMsvcPlayerLines : kNativePlayerLines;
}

void RecordNativePlayer(const CStreamPlayerImp* player) { msvc::RemovePlayerAt(player); }

}  // namespace stream
