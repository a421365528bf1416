// Every player was compiled by the compiler that built this library.
#include "common/player_lines.h"

namespace stream {

const PlayerLines& PlayerLinesFor(const CStreamPlayerImp* /*player*/) { return kNativePlayerLines; }

void RecordNativePlayer(const CStreamPlayerImp* /*player*/) {}

}  // namespace stream
