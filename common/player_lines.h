// The two player operations that take a line: OnMessage and OnPlayResult.
//
// A std::string by value is the one argument of the player interface that compilers lay out
// differently. Where players of another compiler may be loaded with this library, msvc/ defines
// LinesOf and NoteNativePlayer; everywhere else player_lines_native.cc does.
#ifndef COMMON_PLAYER_LINES_H_
#define COMMON_PLAYER_LINES_H_

#include <string>

class CStreamPlayerImp;

// How lines are sent to the players of one compiler. Neither is called without a player.
struct PlayerLines {
  void (*message)(CStreamPlayerImp& player, std::string line);
  void (*play_result)(CStreamPlayerImp& player, std::string line);
};

// For players of this library's own compiler.
extern const PlayerLines kNativePlayerLines;

// How lines are sent to the player at this address. Any thread may ask. Only the address is used.
const PlayerLines& LinesOf(const CStreamPlayerImp* player);

// Notes that a host of this library's own compiler made a facade with this player: what is known of
// a player of another compiler that had the same address no longer holds. Any thread may call it.
void NoteNativePlayer(const CStreamPlayerImp* player);

#endif  // COMMON_PLAYER_LINES_H_
