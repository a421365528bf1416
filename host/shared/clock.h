// The host's time: milliseconds since the clock was made. All of a program run has one clock, so
// times of different threads and of repeated runs can be compared. Safe from any thread.
#ifndef HOST_SHARED_CLOCK_H_
#define HOST_SHARED_CLOCK_H_

#include <chrono>
#include <thread>

namespace host {

class Clock {
 public:
  virtual double NowMs() const = 0;
  // Lets a little time go by: what a loop does between two looks.
  virtual void Pause() = 0;

 protected:
  ~Clock() = default;
};

class SteadyClock final : public Clock {
 public:
  double NowMs() const override {
    const auto since_start = std::chrono::steady_clock::now() - start_;
    return std::chrono::duration<double, std::milli>(since_start).count();
  }
  void Pause() override { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

 private:
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace host

#endif  // HOST_SHARED_CLOCK_H_
