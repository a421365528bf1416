#include "exit_host.h"

#include <stream_downloader.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

class LinePlayer final : public CStreamPlayerImp {
 public:
  void OnDuration(float /*seconds*/) override {}
  void OnBufferedTime(float /*seconds*/) override {}
  void OnAudioClock(float /*seconds*/) override {}
  void OnAudioFrame(MediaFrame /*frame*/) override {}
  void OnVideoFrame(MediaFrame /*frame*/) override {}
  void OnMessage(std::string line) override {
    std::fputs((line + "\n").c_str(), stderr);
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
    changed_.notify_all();
  }
  void OnPlayResult(std::string line) override { OnMessage(std::move(line)); }

  void WaitForLine(const std::string& start) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] {
      return std::any_of(lines_.begin(), lines_.end(),
                         [&](const std::string& line) { return line.starts_with(start); });
    });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;  // guarded by mutex_
};

// Never destroyed: the component calls it until the process has ended.
LinePlayer& Player() {
  static auto* const player = new LinePlayer;
  return *player;
}

CStreamDownloader& Facade(bool is_static) {
  if (is_static) {
    static CStreamDownloader facade(&Player());
    return facade;
  }
  static auto* const facade = new CStreamDownloader(&Player());
  return *facade;
}

}  // namespace

void PlayUntil(const char* address, bool is_static, const char* when) {
  Facade(is_static).BeginDownload(address);
  const std::string moment = when;
  if (moment == "stdin") {
    std::getchar();
  } else if (moment.find_first_not_of("0123456789") == std::string::npos) {
    std::this_thread::sleep_for(std::chrono::microseconds(std::stol(moment)));
  } else {
    Player().WaitForLine(moment);
  }
}
