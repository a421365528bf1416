#include <stream_downloader.h>

#include "cases.h"
#include "recorder.h"
#include "report.h"
#include "system.h"

namespace {

constexpr std::uint64_t kTicksPerSecond = 90'000;

void WaitForFrames(const Recorder& player, std::uint64_t count) {
  player.WaitUntil("the frames", [=](const Recorder& all) { return all.Frames() >= count; });
}

}  // namespace

void PrintFrames(std::uint64_t count, const std::string& address) {
  Recorder player;
  player.PrintAll();
  CStreamDownloader facade(&player);
  Expect(facade.BeginDownload(address), "the address was not accepted");
  WaitForFrames(player, count);
  Expect(facade.EndDownload(), "nothing was playing");
  ExpectValidHeap();
}

void SeekStartsAtThePosition(const std::string& address) {
  Recorder player;
  CStreamDownloader facade(&player);
  Expect(facade.BeginDownload(address), "the address was not accepted");
  WaitForFrames(player, 1);
  Expect(facade.EndDownload(), "nothing was playing");
  player.Forget();

  Expect(facade.SetStartPostion(2), "the position was not accepted");
  Expect(facade.BeginDownload(address), "the address was not accepted again");
  WaitForFrames(player, 1);
  Expect(player.HasMessage("PLAY TS StartPostion:00:00:02.000"), "the position was not reported");
  player.WaitUntil("a video frame", [](const Recorder& all) {
    return all.FirstVideoPlayTime() >= 2 * kTicksPerSecond;
  });
  Expect(facade.EndDownload(), "nothing was playing again");
  ExpectValidHeap();
}

void StopEndsTheCalls(const std::string& address) {
  Recorder player;
  CStreamDownloader facade(&player);
  for (int i = 0; i < 20; ++i) {
    player.Forget();
    facade.SetStartPostion(0);
    Expect(facade.BeginDownload(address), "the address was not accepted");
    if (i % 2 == 0) WaitForFrames(player, 1);
    Expect(facade.EndDownload(), "nothing was playing");
    player.ExpectNoCall();  // until the next start, or the end of the facade's life
    Expect(!facade.EndDownload(), "something played after the stop");
  }
  ExpectValidHeap();
}

void MissingFileIsReportedInBothWays(const std::string& address) {
  Recorder player;
  CStreamDownloader facade(&player);
  Expect(facade.BeginDownload(address), "the address was not accepted");
  player.WaitUntil("the verdict as a result",
                   [&](const Recorder& all) { return all.HasResult("PLAY:MP4 NO:" + address); });
  Expect(player.HasMessage("PLAY MP4:" + address), "the start was not reported");
  Expect(player.HasMessage("PLAY MP4 NO:" + address), "the verdict was not reported");
  facade.EndDownload();
  ExpectValidHeap();
}
