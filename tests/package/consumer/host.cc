// A complete host: plays an address until it receives a frame.
#include <stream_downloader.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>

struct Player : CStreamPlayerImp {
  std::atomic<int> frames{0};
  void OnDuration(float) override {}
  void OnBufferedTime(float) override {}
  void OnAudioClock(float) override {}
  void OnAudioFrame(MediaFrame) override { ++frames; }
  void OnVideoFrame(MediaFrame) override { ++frames; }
  void OnMessage(std::string line) override { std::cout << line + "\n"; }
  void OnPlayResult(std::string line) override { std::cout << line + "\n"; }
};

int main(int, char** argv) {
  Player player;
  CStreamDownloader downloader(&player);
  downloader.BeginDownload(argv[1]);
  for (int i = 0; i < 10000 && player.frames == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  downloader.EndDownload();
  return player.frames > 0 ? 0 : 1;
}
