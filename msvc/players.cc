#include "msvc/players.h"

#include <algorithm>
#include <map>

#include "common/never_destroyed.h"
#include "platform/mutex.h"

namespace stream::msvc {
namespace {

using PlayerOfFacade = std::map<const CStreamDownloader*, const CStreamPlayerImp*>;

struct Players {
  Mutex mutex;
  PlayerOfFacade of_facade GUARDED_BY(mutex);
};

Players& AllPlayers() {
  static NeverDestroyed<Players> players;
  return *players;
}

// A linear search, since few facades exist at a time.
bool Contains(const PlayerOfFacade& facades, const CStreamPlayerImp* player) {
  return std::any_of(facades.begin(), facades.end(),
                     [player](const auto& noted) { return noted.second == player; });
}

}  // namespace

void AddPlayer(const CStreamDownloader* facade, const CStreamPlayerImp* player) {
  if (player == nullptr) return RemovePlayer(facade);
  Players& players = AllPlayers();
  const MutexLock lock(players.mutex);
  players.of_facade[facade] = player;
}

void SharePlayer(const CStreamDownloader* facade, const CStreamPlayerImp* player) {
  Players& players = AllPlayers();
  const MutexLock lock(players.mutex);
  if (Contains(players.of_facade, player)) {
    players.of_facade[facade] = player;
  } else {
    players.of_facade.erase(facade);
  }
}

void RemovePlayer(const CStreamDownloader* facade) {
  Players& players = AllPlayers();
  const MutexLock lock(players.mutex);
  players.of_facade.erase(facade);
}

void RemovePlayerAt(const CStreamPlayerImp* player) {
  Players& players = AllPlayers();
  const MutexLock lock(players.mutex);
  std::erase_if(players.of_facade, [player](const auto& noted) { return noted.second == player; });
}

bool IsPlayer(const CStreamPlayerImp* player) {
  Players& players = AllPlayers();
  const MutexLock lock(players.mutex);
  return Contains(players.of_facade, player);
}

}  // namespace stream::msvc
