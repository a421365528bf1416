// The players in this process that Visual C++ compiled: those of the facades that were made through
// the constructor that is exported under that compiler's name.
//
// They are recorded by facade, so a player is forgotten with the last facade that refers to it. Any
// thread may call these functions. Only addresses are used.
#ifndef MSVC_PLAYERS_H_
#define MSVC_PLAYERS_H_

class CStreamDownloader;
class CStreamPlayerImp;

namespace msvc {

// The facade was made with the player, which may be null, through that constructor. Throws
// std::bad_alloc.
void AddPlayer(const CStreamDownloader* facade, const CStreamPlayerImp* player);

// The facade now refers to this player, which another compiler may have compiled. Throws
// std::bad_alloc.
void SharePlayer(const CStreamDownloader* facade, const CStreamPlayerImp* player);

// The facade refers to no player any more.
void RemovePlayer(const CStreamDownloader* facade);

// Another compiler compiled the player at this address, whatever was there before.
void ForgetPlayer(const CStreamPlayerImp* player);

bool IsPlayer(const CStreamPlayerImp* player);

}  // namespace msvc

#endif  // MSVC_PLAYERS_H_
