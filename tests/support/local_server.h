// An HTTP server inside the test's process, on a port of the system's choice, that remembers what
// it was asked. What it answers is up to the classes derived from it.
#ifndef TESTS_SUPPORT_LOCAL_SERVER_H_
#define TESTS_SUPPORT_LOCAL_SERVER_H_

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/test_limit.h"

namespace httplib {
class DataSink;
struct Request;
struct Response;
class Server;
}  // namespace httplib

class LocalServer {
 public:
  struct Request {
    std::string path;  // decoded, without the query
    std::string range;
    std::string user_agent;
    bool has_user_agent;
  };

  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

  std::string Url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }

  std::vector<Request> Requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  std::size_t CountRequests(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    return CountLocked(path);
  }

  bool WaitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTestLimit, [&] { return requests_.size() >= count; });
  }

  bool WaitForRequests(const std::string& path, std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTestLimit, [&] { return CountLocked(path) >= count; });
  }

 protected:
  struct Cold {};  // a server that is not open yet

  // The library of the server makes its tables at their first use, which the thread sanitizer,
  // since the library is not built with it, cannot tell from a race. So each kind of reply is asked
  // for once by `warm_up`, of a server whose threads have ended before those of the first real one
  // begin.
  explicit LocalServer(bool (*warm_up)());
  explicit LocalServer(Cold cold);

  ~LocalServer();

  void Open();

  // For a server that is asked very often: a connection stays open for any number of requests,
  // since one for each would use up the ports. Before Open.
  void KeepConnections();

  // To be called by the destructor of the class that answers, and harmless a second time.
  void Close();

  // Whether an open server answers all of these.
  bool Answers(const std::vector<std::string>& paths) const;

  void Remember(const httplib::Request& request);

  // Waits for `met`, which is asked with the mutex held, or for the end of the test. False, which
  // ends a reply, when that has come.
  template <typename Condition>
  bool WaitFor(Condition met) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return met() || ending_; });
    return !ending_;
  }
  bool WaitForEnd() {
    return WaitFor([] { return false; });
  }

  bool IsEnding() const {
    const std::lock_guard lock(mutex_);
    return ending_;
  }

  const std::unique_ptr<httplib::Server> server_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;

 private:
  std::size_t CountLocked(const std::string& path) const;

  int port_ = 0;
  std::thread thread_;
  std::vector<Request> requests_;  // guarded by mutex_
  bool ending_ = false;            // guarded by mutex_
};

#endif  // TESTS_SUPPORT_LOCAL_SERVER_H_
