#include <stream_downloader.h>

#include <new>

#include "cases.h"
#include "echo.h"
#include "recorder.h"
#include "report.h"
#include "system.h"

namespace {

constexpr std::size_t kSpace = 16'384;  // for a player of either compiler

// A library that GCC compiled, with a player of its own.
class GccPlayers {
 public:
  GccPlayers() : library_(LoadLibraryA("gcc_player.dll")) {
    Expect(library_ != nullptr, "gcc_player.dll cannot be loaded");
    Find(size, "GccPlayerSize");
    Find(make_at, "GccPlayerMakeAt");
    Find(echo, "GccPlayerEcho");
    Find(play, "GccPlayerPlay");
  }

  std::size_t (*size)() = nullptr;
  void (*make_at)(void* memory) = nullptr;
  bool (*echo)(void* player, const char* text, std::size_t length) = nullptr;
  bool (*play)(void* player, const char* address, std::uint64_t frames) = nullptr;

 private:
  template <typename Function>
  void Find(Function& function, const char* name) {
    function = reinterpret_cast<Function>(GetProcAddress(library_, name));
    Expect(function != nullptr, name);
  }

  void* library_;
};

void ExpectGccEcho(const GccPlayers& gcc, void* player, const std::string& text) {
  Expect(gcc.echo(player, text.data(), text.size()), "a GCC player received another line");
}

}  // namespace

void PlayersOfBothCompilersAlternate(const std::string& address) {
  constexpr std::uint64_t kFrames = 20;
  const GccPlayers gcc;
  alignas(16) static unsigned char space[kSpace];
  Expect(gcc.size() <= sizeof(space), "the GCC player is larger than its space");
  gcc.make_at(space);
  Recorder player;
  CStreamDownloader facade(&player);
  for (std::size_t length = 1; length < 5000; length += 49) {
    ExpectEcho(facade, player, std::string(length, 'm'));
    ExpectGccEcho(gcc, space, std::string(length, 'g'));
  }
  Expect(facade.BeginDownload(address), "the address was not accepted");
  player.WaitUntil("the frames", [](const Recorder& all) { return all.Frames() >= kFrames; });
  Expect(facade.EndDownload(), "nothing was playing");
  facade.SetStartPostion(0);  // otherwise the received bytes would not play again
  const std::string end("\0", 1);
  Expect(gcc.play(space, (address + end).data(), kFrames), "the GCC player received no frames");
  ExpectEcho(facade, player, "this player goes on");
  ExpectValidHeap();
}

void GccPlayerAtTheAddressOfAnother() {
  const GccPlayers gcc;
  alignas(16) static unsigned char space[kSpace];
  Expect(gcc.size() <= sizeof(space) && sizeof(Recorder) <= sizeof(space),
         "too large for its space");
  const std::string text(100, 't');
  for (int i = 0; i < 3; ++i) {
    auto* const player = new (space) Recorder;
    auto* const facade = new CStreamDownloader(player);
    ExpectEcho(*facade, *player, text);
    if (i == 0) delete facade;  // the others are never destroyed, as in a host that leaks them
    player->Recorder::~Recorder();
    gcc.make_at(space);
    ExpectGccEcho(gcc, space, text);
  }
  ExpectValidHeap();
}
