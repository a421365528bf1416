// The two player operations that take a line: OnMessage and OnPlayResult.
//
// They take a std::string by value, the only argument of the player interface that compilers lay
// out differently. In MinGW builds, msvc/ defines PlayerLinesFor and RecordNativePlayer, since
// players of another compiler may use the library; elsewhere player_lines_native.cc defines them.
#ifndef COMMON_PLAYER_LINES_H_
#define COMMON_PLAYER_LINES_H_

#include <string>

class CStreamPlayerImp;

namespace stream {

// Functions that send lines to players of one compiler. Call them only with a player.
struct PlayerLines {
  void (*message)(CStreamPlayerImp& player, std::string line);
  void (*play_result)(CStreamPlayerImp& player, std::string line);
};

// For players of this library's own compiler.
extern const PlayerLines kNativePlayerLines;

// Returns the functions for the player at this address. Safe from any thread. Uses only the
// address.
const PlayerLines& PlayerLinesFor(const CStreamPlayerImp* player);

// Records that a host of this library's own compiler created a facade with this player. Replaces
// what was recorded for a player of another compiler at the same address. Safe from any thread.
void RecordNativePlayer(const CStreamPlayerImp* player);

}  // namespace stream

#endif  // COMMON_PLAYER_LINES_H_
