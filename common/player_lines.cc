#include "common/player_lines.h"

#include <utility>

#include "stream_player.h"

namespace stream {
namespace {

void CallOnMessage(CStreamPlayerImp& player, std::string line) {
  player.OnMessage(std::move(line));
}

void CallOnPlayResult(CStreamPlayerImp& player, std::string line) {
  player.OnPlayResult(std::move(line));
}

}  // namespace

const PlayerLines kNativePlayerLines = {CallOnMessage, CallOnPlayResult};

}  // namespace stream
