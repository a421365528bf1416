// The players in this process that Visual C++ compiled: the players of facades that were created
// with the constructor exported under that compiler's name.
//
// They are recorded by facade, so a player's record is removed with the last facade that refers to
// it. Any thread may call these functions. Only addresses are used.
#ifndef MSVC_PLAYERS_H_
#define MSVC_PLAYERS_H_

class CStreamDownloader;
class CStreamPlayerImp;

namespace stream::msvc {

// Records that the facade was created with that constructor and this player, which may be null.
// Throws std::bad_alloc.
void AddPlayer(const CStreamDownloader* facade, const CStreamPlayerImp* player);

// Call it when the facade refers to another player now. Records that player if it is already
// recorded as one of Visual C++, otherwise removes the record of the facade. Throws std::bad_alloc.
void SharePlayer(const CStreamDownloader* facade, const CStreamPlayerImp* player);

// Removes the record of the facade.
void RemovePlayer(const CStreamDownloader* facade);

// Removes all records of this player: a player of another compiler is at its address now.
void RemovePlayerAt(const CStreamPlayerImp* player);

bool IsPlayer(const CStreamPlayerImp* player);

}  // namespace stream::msvc

#endif  // MSVC_PLAYERS_H_
