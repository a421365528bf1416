// An HTTP server in the test's process, on an ephemeral port, that records the requests it
// receives. Derived classes define the replies.
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
  struct Cold {};  // tag for a server that is not open yet

  // The HTTP library initializes its tables at their first use. The thread sanitizer, which does
  // not instrument that library, would report this as a race. So before the first server of a kind
  // opens, `warm_up` requests each kind of reply once from a server whose threads have ended by
  // then.
  explicit LocalServer(bool (*warm_up)());
  explicit LocalServer(Cold cold);

  ~LocalServer();

  void Open();

  // Keeps connections open for any number of requests, for a server with very many requests: one
  // connection for each would exhaust the ports. Call it before Open.
  void KeepConnections();

  // Call it in the destructor of the derived class that sends the replies. A second call does
  // nothing.
  void Close();

  // Whether an open server answers requests for all these paths.
  bool Answers(const std::vector<std::string>& paths) const;

  void Remember(const httplib::Request& request);

  // Waits until `met`, which is called with the mutex held, is true or the test ends. Returns
  // false, which ends the reply, if the test ends.
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
