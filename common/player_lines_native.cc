// Every player was compiled by the compiler that built this library.
#include "common/player_lines.h"

const PlayerLines& LinesOf(const CStreamPlayerImp* /*player*/) { return kNativePlayerLines; }

void NoteNativePlayer(const CStreamPlayerImp* /*player*/) {}
