// An HTTP server in the test's process with one reply for each path. The test may change replies
// while the server runs.
#ifndef TESTS_SUPPORT_HLS_SERVER_H_
#define TESTS_SUPPORT_HLS_SERVER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/local_server.h"
#include "tests/support/wait_until.h"

namespace stream {

// The reply for one path: status, the first `sent` bytes of the body, and what follows them.
struct Reply {
  enum class Then { kRest, kConnectionEnds, kNothing, kRestOnceReleased, kNoReply, kRepeatForever };

  std::string body;
  Then then = Then::kRest;
  std::size_t sent = 0;
  int status = 200;
  std::string location = {};           // redirect target, if not empty
  bool is_blocked = false;             // nothing is sent before Release, not even headers
  std::chrono::milliseconds pause{1};  // for kRepeatForever; measured by the component's clock
};

inline Reply Whole(std::string body) { return {std::move(body)}; }

inline Reply Whole(const std::vector<std::uint8_t>& body) {
  return {std::string(body.begin(), body.end())};
}

inline Reply CutAfter(std::size_t sent, Reply reply) {
  reply.then = Reply::Then::kConnectionEnds;
  reply.sent = sent;
  return reply;
}

inline Reply StalledAfter(std::size_t sent, Reply reply) {
  reply.then = Reply::Then::kNothing;
  reply.sent = sent;
  return reply;
}

inline Reply GatedAfter(std::size_t sent, Reply reply) {
  reply.then = Reply::Then::kRestOnceReleased;
  reply.sent = sent;
  return reply;
}

// Sends the body repeatedly, with a pause after each copy, until the client disconnects. A test
// whose simulated time does not advance must release its clock before the server is destroyed.
inline Reply Trickling(Reply reply,
                       std::chrono::milliseconds pause = std::chrono::milliseconds(1)) {
  reply.then = Reply::Then::kRepeatForever;
  reply.pause = pause;
  return reply;
}
inline Reply Silent() { return {"", Reply::Then::kNoReply}; }

inline Reply WithStatus(int status, Reply reply) {
  reply.status = status;
  return reply;
}

inline Reply RedirectTo(std::string location) {
  return {"", Reply::Then::kRest, 0, 302, std::move(location)};
}

inline Reply BlockedUntilRelease(Reply reply) {
  reply.is_blocked = true;
  return reply;
}

class HlsServer : public LocalServer {
 public:
  HlsServer();

  ~HlsServer() { Close(); }

  // Sets the reply for `path` (without query) from now on. Paths without a reply get status 404.
  void Put(const std::string& path, Reply reply) {
    const std::lock_guard lock(mutex_);
    replies_[path] = std::make_shared<const Reply>(std::move(reply));
  }
  void Put(const std::string& path, std::string body) { Put(path, Whole(std::move(body))); }
  void Put(const std::string& path, const std::vector<std::uint8_t>& body) {
    Put(path, Whole(body));
  }

  // Sends the blocked replies for this path and the rest of gated ones.
  void Release(const std::string& path) {
    {
      const std::lock_guard lock(mutex_);
      released_.insert(path);
    }
    changed_.notify_all();
  }

  // Waits until a trickling reply for this path has sent its body `count` times.
  bool WaitForTrickles(const std::string& path, std::size_t count) {
    return WaitUntil([&] {
      const std::lock_guard lock(mutex_);
      return trickles_[path] >= count;
    });
  }

  // Waits until a stalled reply for this path has sent its first bytes.
  bool WaitForStall(const std::string& path) {
    return WaitUntil([&] {
      const std::lock_guard lock(mutex_);
      return stalled_.contains(path);
    });
  }

  // Waits until the client has disconnected from a trickling reply for this path.
  bool WaitForHangUp(const std::string& path) {
    return WaitUntil([&] {
      const std::lock_guard lock(mutex_);
      return hung_up_.contains(path);
    });
  }

 private:
  using SharedReply = std::shared_ptr<const Reply>;

  explicit HlsServer(Cold cold) : LocalServer(cold) { SetUpReplies(); }

  static bool WarmUp();

  void SetUpReplies();

  SharedReply ReplyTo(const std::string& path) const;

  void Answer(const std::string& path, const SharedReply& reply, httplib::Response& response);

  void Send(const std::string& path, const SharedReply& reply, httplib::Response& response);

  // Sends a chunked reply, since an endless body has no length.
  void Trickle(const std::string& path, const SharedReply& reply, httplib::Response& response);

  // Waits for Release. Returns false if the test ends first.
  bool WaitForRelease(const std::string& path);

  // Waits for the end of the test, then returns false.
  bool Stall(const std::string& path);

  bool Continues(const std::string& path, Reply::Then then);

  std::map<std::string, SharedReply> replies_;   // guarded by mutex_
  std::set<std::string> released_;               // guarded by mutex_
  std::map<std::string, std::size_t> trickles_;  // guarded by mutex_
  std::set<std::string> stalled_;                // guarded by mutex_
  std::set<std::string> hung_up_;                // guarded by mutex_
};

}  // namespace stream

#endif  // TESTS_SUPPORT_HLS_SERVER_H_
