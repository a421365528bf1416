// An HTTP server inside the test's process that answers each path as the test says, which may
// change its mind while the server runs.
#ifndef TESTS_SUPPORT_HLS_SERVER_H_
#define TESTS_SUPPORT_HLS_SERVER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/local_server.h"
#include "tests/support/wait_until.h"

// How one path is answered: the status, the first `sent` bytes of the body, and what comes then.
struct Reply {
  enum class Then {
    kRest,
    kConnectionEnds,
    kNothing,
    kRestOnceReleased,
    kNotEvenAnAnswer,
    kItselfForEver
  };

  std::string body;
  Then then = Then::kRest;
  std::size_t sent = 0;
  int status = 200;
  std::string location = {};           // where it is redirected, if anywhere
  std::chrono::milliseconds pause{0};  // before the answer
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
// The body over and over, with a pause after each, for as long as the client listens.
inline Reply Trickling(Reply reply) {
  reply.then = Reply::Then::kItselfForEver;
  return reply;
}
inline Reply Silent() { return {"", Reply::Then::kNotEvenAnAnswer}; }
inline Reply WithStatus(int status, Reply reply) {
  reply.status = status;
  return reply;
}
inline Reply RedirectTo(std::string location) {
  return {"", Reply::Then::kRest, 0, 302, std::move(location)};
}
inline Reply After(std::chrono::milliseconds pause, Reply reply) {
  reply.pause = pause;
  return reply;
}

class HlsServer final : public LocalServer {
 public:
  HlsServer() : LocalServer(WarmUp) {
    SetUpReplies();
    Open();
  }

  ~HlsServer() { Close(); }

  // From now on `path`, without a query, is answered so. What was not put is not found.
  void Put(const std::string& path, Reply reply) {
    const std::lock_guard lock(mutex_);
    replies_[path] = std::make_shared<const Reply>(std::move(reply));
  }
  void Put(const std::string& path, std::string body) { Put(path, Whole(std::move(body))); }
  void Put(const std::string& path, const std::vector<std::uint8_t>& body) {
    Put(path, Whole(body));
  }

  // Lets the rest of gated replies for this path go.
  void Release(const std::string& path) {
    {
      const std::lock_guard lock(mutex_);
      released_.insert(path);
    }
    changed_.notify_all();
  }

  // Waits until the body of a trickling reply for this path was sent so often.
  bool WaitForTrickles(const std::string& path, std::size_t count) {
    return WaitUntil([&] {
      const std::lock_guard lock(mutex_);
      return trickles_[path] >= count;
    });
  }

  // Whether the client has hung up on a trickling reply for this path.
  bool WaitForHangUp(const std::string& path) {
    return WaitUntil([&] {
      const std::lock_guard lock(mutex_);
      return hung_up_.contains(path);
    });
  }

 private:
  using SharedReply = std::shared_ptr<const Reply>;

  explicit HlsServer(Cold cold) : LocalServer(cold) { SetUpReplies(); }

  static bool WarmUp() {
    HlsServer server{Cold()};
    server.Put("/whole", std::string("warm"));
    server.Put("/gated", GatedAfter(1, Whole(std::string("warm"))));
    server.Put("/moved", RedirectTo("/whole"));
    server.Release("/gated");
    server.Open();
    return server.Answers({"/whole", "/gated", "/moved", "/nowhere"});
  }

  void SetUpReplies() {
    server_.Get(".*", [this](const auto& request, auto& response) {
      // In this order: once a request is known to have come, a new reply is not for it.
      const SharedReply reply = ReplyTo(request.path);
      Remember(request);
      if (reply != nullptr) std::this_thread::sleep_for(reply->pause);
      Answer(request.path, reply, response);
    });
  }

  SharedReply ReplyTo(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    const auto found = replies_.find(path);
    return found == replies_.end() ? nullptr : found->second;
  }

  void Answer(const std::string& path, const SharedReply& reply, httplib::Response& response) {
    if (reply == nullptr) {
      response.status = 404;
      response.set_content("no such page", "text/plain");
    } else if (reply->then == Reply::Then::kNotEvenAnAnswer) {
      WaitForEnd();
    } else if (!reply->location.empty()) {
      response.set_redirect(reply->location);
    } else {
      response.status = reply->status;
      Send(path, reply, response);
    }
  }

  void Send(const std::string& path, const SharedReply& reply, httplib::Response& response) {
    if (reply->then == Reply::Then::kItselfForEver) return Trickle(path, reply, response);
    if (reply->body.empty()) return response.set_content("", "text/plain");
    response.set_content_provider(
        reply->body.size(), "application/octet-stream",
        [this, path, reply](std::size_t offset, std::size_t, httplib::DataSink& sink) {
          const std::string& body = reply->body;
          if (offset < reply->sent) return sink.write(body.data() + offset, reply->sent - offset);
          return GoesOn(path, reply->then) &&
                 sink.write(body.data() + offset, body.size() - offset);
        });
  }

  // Without a length, which an endless body does not have.
  void Trickle(const std::string& path, const SharedReply& reply, httplib::Response& response) {
    response.set_chunked_content_provider(
        "application/octet-stream", [this, path, reply](std::size_t, httplib::DataSink& sink) {
          const bool sent = sink.write(reply->body.data(), reply->body.size());
          {
            const std::lock_guard lock(mutex_);
            ++trickles_[path];
            if (!sent) hung_up_.insert(path);
          }
          std::this_thread::sleep_for(std::chrono::milliseconds(1));
          return sent && !IsEnding();
        });
  }

  bool GoesOn(const std::string& path, Reply::Then then) {
    switch (then) {
      case Reply::Then::kRest:
        return true;
      case Reply::Then::kRestOnceReleased:
        return WaitFor([&] { return released_.contains(path); });
      case Reply::Then::kNothing:
        return WaitForEnd();
      default:
        return false;
    }
  }

  std::map<std::string, SharedReply> replies_;   // guarded by mutex_
  std::set<std::string> released_;               // guarded by mutex_
  std::map<std::string, std::size_t> trickles_;  // guarded by mutex_
  std::set<std::string> hung_up_;                // guarded by mutex_
};

#endif  // TESTS_SUPPORT_HLS_SERVER_H_
