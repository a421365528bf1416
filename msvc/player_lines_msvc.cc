// Sends lines to the players of this library's own compiler and of Visual C++. The constructor of
// the facade decides which compiler a player is of.
#include <cstddef>
#include <cstring>

#include "common/player_lines.h"
#include "msvc/msvc_string.h"
#include "msvc/players.h"

namespace {

// Slots in the player's virtual table, a binary contract.
constexpr std::size_t kOnMessage = 10;
constexpr std::size_t kOnPlayResult = 11;

using LineOperation = void (*)(CStreamPlayerImp* player, msvc::String* line);

LineOperation OperationOf(const CStreamPlayerImp& player, std::size_t slot) {
  const LineOperation* table = nullptr;  // the first field of an object with virtual operations
  std::memcpy(&table, static_cast<const void*>(&player), sizeof(table));
  return table[slot];
}

void Send(CStreamPlayerImp& player, std::size_t slot, const std::string& line) {
  // Arguments that are passed by address are aligned so.
  alignas(16) msvc::String copy = msvc::MakeString(line);
  OperationOf(player, slot)(&player, &copy);  // which destroys the copy
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

const PlayerLines& LinesOf(const CStreamPlayerImp* player) {
  return msvc::IsPlayer(player) ? kMsvcPlayerLines : kNativePlayerLines;
}

void NoteNativePlayer(const CStreamPlayerImp* player) { msvc::ForgetPlayer(player); }
