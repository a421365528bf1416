// An HTTP server inside the test's process that answers each request for its one body as a test
// has laid down.
#ifndef TESTS_SUPPORT_MP4_SERVER_H_
#define TESTS_SUPPORT_MP4_SERVER_H_

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/local_server.h"

// How one request is answered.
struct Mp4Reply {
  enum class End { kCut, kStall, kGate };  // the connection ends, or nothing comes, or not yet

  bool ranges = true;                  // false: the whole body, whatever was asked for
  int status = 0;                      // an error, with `page` as its body
  std::string page = "no";             // likewise
  bool silent = false;                 // no answer at all
  std::size_t piece = 65'536;          // bytes that are sent at once
  std::chrono::microseconds pause{0};  // behind each of them
  std::size_t until = std::numeric_limits<std::size_t>::max();  // bytes of the body in all, then
  End end = End::kCut;
};

class Mp4Server final : public LocalServer {
 public:
  Mp4Server() : LocalServer(WarmUp) {
    SetUpReplies();
    Open();
  }

  ~Mp4Server() { Close(); }

  // Both are set before the first request. The first request gets the first reply and so on; the
  // last one counts for all that follow.
  void Serve(const std::vector<std::uint8_t>& body) { body_.assign(body.begin(), body.end()); }
  void Answer(std::vector<Mp4Reply> replies) { replies_ = std::move(replies); }

  std::string Address() const { return Url("/a.mp4"); }

  // Lets the rest of gated replies go.
  void Release() {
    {
      const std::lock_guard lock(mutex_);
      released_ = true;
    }
    changed_.notify_all();
  }

  std::vector<std::string> Ranges() const {
    std::vector<std::string> ranges;
    for (const Request& request : Requests()) ranges.push_back(request.range);
    return ranges;
  }

 private:
  explicit Mp4Server(Cold cold) : LocalServer(cold) { SetUpReplies(); }

  static bool WarmUp() {
    Mp4Server server{Cold()};
    server.Serve(std::vector<std::uint8_t>(100));
    server.Answer({{}, {}, {.ranges = false}, {.ranges = false}, {.status = 503}, {.status = 416}});
    server.Open();
    const std::string path = "/a.mp4";
    return server.Answers({path, path, path, path});
  }

  void SetUpReplies() {
    server_.Get("/.*\\.mp4", [this](const auto& request, auto& response) {
      const Mp4Reply reply = NextReply();
      Remember(request);
      const std::string range = request.get_header_value("Range");
      if (reply.silent) {
        WaitForEnd();
      } else if (reply.status != 0) {
        SendPage(response, reply.status, reply.page);
      } else if (!reply.ranges) {
        SendAll(response, reply);
      } else if (FirstByte(range) >= body_.size() && !range.empty()) {
        SendPage(response, 416, "nothing there");
      } else {
        SendRange(response, reply);
      }
    });
  }

  Mp4Reply NextReply() {
    const std::lock_guard lock(mutex_);
    if (replies_.empty()) return {};
    return replies_[std::min(asked_++, replies_.size() - 1)];
  }

  // Of "bytes=N-".
  static std::size_t FirstByte(const std::string& range) {
    const std::size_t at = range.find_first_of("0123456789");
    return at == std::string::npos ? 0 : std::stoul(range.substr(at));
  }

  // In chunks, which the library never cuts to the range that was asked for.
  static void SendPage(httplib::Response& response, int status, const std::string& page) {
    response.status = status;
    response.set_chunked_content_provider("text/plain", [page](auto, auto& sink) {
      sink.write(page.data(), page.size());
      sink.done();
      return true;
    });
  }

  // The library tells the range in its answer, and asks for what lies in it.
  void SendRange(httplib::Response& response, const Mp4Reply& reply) {
    response.set_content_provider(body_.size(), "video/mp4",
                                  [this, reply](std::size_t at, std::size_t, auto& sink) {
                                    return SendPiece(reply, at, sink) != 0;
                                  });
  }

  void SendAll(httplib::Response& response, const Mp4Reply& reply) {
    response.status = 200;
    response.set_chunked_content_provider(
        "video/mp4", [this, reply, at = std::size_t{0}](auto, auto& sink) mutable {
          if (at == body_.size()) {
            sink.done();
            return true;
          }
          const std::size_t sent = SendPiece(reply, at, sink);
          at += sent;
          return sent != 0;
        });
  }

  // Returns how many bytes it sent; 0 ends the reply.
  std::size_t SendPiece(const Mp4Reply& reply, std::size_t at, httplib::DataSink& sink) {
    const bool held = at >= reply.until && !(reply.end == Mp4Reply::End::kGate && IsReleased());
    if (held && !AwaitEndOf(reply)) return 0;
    const std::size_t limit = at < reply.until ? std::min(reply.until, body_.size()) : body_.size();
    const std::size_t size = std::min(reply.piece, limit - at);
    if (IsEnding() || !sink.write(body_.data() + at, size)) return 0;
    if (reply.pause.count() > 0) std::this_thread::sleep_for(reply.pause);
    return size;
  }

  // Whether the reply goes on afterwards.
  bool AwaitEndOf(const Mp4Reply& reply) {
    switch (reply.end) {
      case Mp4Reply::End::kCut:
        return false;
      case Mp4Reply::End::kStall:
        return WaitForEnd();
      case Mp4Reply::End::kGate:
        return WaitFor([this] { return released_; });
    }
    return false;
  }

  bool IsReleased() const {
    const std::lock_guard lock(mutex_);
    return released_;
  }

  std::string body_;
  std::vector<Mp4Reply> replies_;
  std::size_t asked_ = 0;  // guarded by mutex_
  bool released_ = false;  // guarded by mutex_
};

#endif  // TESTS_SUPPORT_MP4_SERVER_H_
