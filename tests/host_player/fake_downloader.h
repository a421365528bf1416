// A downloader that plays nothing and records its calls.
#ifndef TESTS_HOST_PLAYER_FAKE_DOWNLOADER_H_
#define TESTS_HOST_PLAYER_FAKE_DOWNLOADER_H_

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/shared/downloader.h"

namespace player {

class FakeDownloader final : public host::Downloader {
 public:
  bool Begin(const std::string& address) override {
    calls.push_back("begin " + address);
    if (on_begin) on_begin(std::exchange(start_seconds_, 0));
    return !refuses;
  }
  bool End() override {
    calls.emplace_back("end");
    return true;
  }
  bool SetStart(float seconds) override {
    calls.push_back("start at " + std::to_string(static_cast<int>(seconds)));
    start_seconds_ = seconds;
    return true;
  }

  std::vector<std::string> calls;
  bool refuses = false;
  std::function<void(double start_seconds)> on_begin;

 private:
  double start_seconds_ = 0;
};

}  // namespace player

#endif  // TESTS_HOST_PLAYER_FAKE_DOWNLOADER_H_
