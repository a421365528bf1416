// Every call of the component, and a report that fails in each of them.
#ifndef TESTS_HOST_EVERY_CALL_H_
#define TESTS_HOST_EVERY_CALL_H_

#include <cstdint>
#include <new>
#include <string>

#include "host/shared/report.h"
#include "tests/host/host_support.h"

namespace host {

constexpr std::uint64_t kEveryCall = 7;

// Makes each kind of call to `player` once.
inline void MakeEveryCall(CStreamPlayerImp& player, std::uint64_t pts) {
  player.OnMessage("m");
  player.OnPlayResult("r");
  player.OnDuration(1);
  player.OnBufferedTime(1);
  player.OnAudioClock(1);
  player.OnAudioFrame(FrameOf(pts, "a"));
  player.OnVideoFrame(FrameOf(pts, "v"));
}

// Runs out of memory in every call.
class ReportWithoutMemory final : public Report {
 public:
  void OnDuration(float) override { throw std::bad_alloc(); }
  void OnBufferedTime(float) override { throw std::bad_alloc(); }
  void OnAudioClock(float) override { throw std::bad_alloc(); }
  void OnAudioFrame(MediaFrame) override { throw std::bad_alloc(); }
  void OnVideoFrame(MediaFrame) override { throw std::bad_alloc(); }
  void OnMessage(std::string) override { throw std::bad_alloc(); }
  void OnPlayResult(std::string) override { throw std::bad_alloc(); }
  void OpenRun() override {}
  bool Write(const std::string&) override { return false; }
};

}  // namespace host

#endif  // TESTS_HOST_EVERY_CALL_H_
