// The members of CStreamDownloader as Visual C++ calls them; stream_downloader.def exports them
// under that compiler's names.
//
// Both compilers pass `this` as the first argument, and pass floats, bools and addresses alike.
// Strings and exceptions differ, so these functions convert strings and let no exception out.
#include <cstring>
#include <new>
#include <string>

#include "common/caught.h"
#include "msvc/msvc_string.h"
#include "msvc/players.h"
#include "stream_downloader.h"

namespace stream {
namespace {

// The player is the first field of a facade: a binary contract.
CStreamPlayerImp* PlayerOf(const CStreamDownloader& facade) {
  void* player = nullptr;
  std::memcpy(&player, static_cast<const void*>(&facade), sizeof(void*));
  return static_cast<CStreamPlayerImp*>(player);
}

void SetPlayer(CStreamDownloader& facade, CStreamPlayerImp* player) {
  const void* const field = player;
  std::memcpy(static_cast<void*>(&facade), &field, sizeof(void*));
}

// Returns what the function returns. If it throws, logs a line and returns false.
template <typename Function>
bool Guarded(const char* where, const Function& function) noexcept {
  try {
    return function();
  } catch (...) {
    LogCaught(where, "");
    return false;
  }
}

}  // namespace

extern "C" {

// Constructs with a null player, since the native constructor would record the player as native.
// Then records the player and stores it. If recording fails, the facade plays without a player.
CStreamDownloader* MsvcConstruct(void* memory, CStreamPlayerImp* player) {
  auto* const facade = new (memory) CStreamDownloader(nullptr);
  const bool is_recorded = Guarded("CStreamDownloader: ", [=] {
    msvc::AddPlayer(facade, player);
    return true;
  });
  if (is_recorded) SetPlayer(*facade, player);
  return facade;
}

void MsvcDestroy(CStreamDownloader* facade) {
  facade->~CStreamDownloader();
  msvc::RemovePlayer(facade);
}

CStreamDownloader* MsvcAssign(CStreamDownloader* to, const CStreamDownloader* from) {
  *to = *from;
  const bool is_recorded = Guarded("operator=: ", [to] {
    msvc::SharePlayer(to, PlayerOf(*to));
    return true;
  });
  if (!is_recorded) SetPlayer(*to, nullptr);
  return to;
}

bool MsvcBeginDownload(CStreamDownloader* facade, msvc::String* url) {
  const bool begun = Guarded("BeginDownload: ", [facade, url] {
    return facade->BeginDownload(std::string(msvc::TextOf(*url)));
  });
  msvc::Destroy(*url);
  return begun;
}

bool MsvcEndDownload(CStreamDownloader* facade) {
  return Guarded("EndDownload: ", [facade] { return facade->EndDownload(); });
}

bool MsvcSetStartPostion(CStreamDownloader* facade, float seconds) {
  return Guarded("SetStartPostion: ", [=] { return facade->SetStartPostion(seconds); });
}

}  // extern "C"

}  // namespace stream
