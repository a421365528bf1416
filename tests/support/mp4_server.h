// An HTTP server in the test's process that serves one body, with replies that the test defines.
#ifndef TESTS_SUPPORT_MP4_SERVER_H_
#define TESTS_SUPPORT_MP4_SERVER_H_

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/local_server.h"

// The reply to one request.
struct Mp4Reply {
  enum class End {
    kCut,
    kStall,
    kGate
  };  // at `until`: disconnect, send nothing more, or wait for Release

  bool ranges = true;                  // false: sends the whole body whatever range is requested
  int status = 0;                      // if not 0, this status with `page` as the body
  std::string page = "no";             // see `status`
  bool silent = false;                 // sends no reply at all
  std::size_t piece = 65'536;          // bytes per write
  std::chrono::microseconds pause{0};  // after each write
  std::size_t until = std::numeric_limits<std::size_t>::max();  // bytes of the body before `end`
  End end = End::kCut;
};

class Mp4Server : public LocalServer {
 public:
  Mp4Server();

  ~Mp4Server() { Close(); }

  // Call both before the first request. Each request gets the next reply; the last one is repeated.
  void Serve(const std::vector<std::uint8_t>& body) { body_.assign(body.begin(), body.end()); }
  void Answer(std::vector<Mp4Reply> replies) { replies_ = std::move(replies); }

  // From now on every request for `path` gets this reply.
  void AnswerAt(const std::string& path, const Mp4Reply& reply) {
    const std::lock_guard lock(mutex_);
    replies_at_[path] = reply;
  }

  std::string Address() const { return Url("/a.mp4"); }

  // Sends the rest of gated replies.
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

  static bool WarmUp();

  void SetUpReplies();

  Mp4Reply NextReply(const std::string& path);

  // N of "bytes=N-".
  static std::size_t FirstByte(const std::string& range);

  // Sends the page in chunks: the HTTP library does not cut those to the requested range.
  static void SendPage(httplib::Response& response, int status, const std::string& page);

  // The HTTP library sends the Content-Range header and calls back for the bytes of the range only.
  void SendRange(httplib::Response& response, const Mp4Reply& reply);

  void SendAll(httplib::Response& response, const Mp4Reply& reply);

  // Returns how many bytes it sent; 0 ends the reply.
  std::size_t SendChunk(const Mp4Reply& reply, std::size_t at, httplib::DataSink& sink);

  // Whether the reply continues afterwards.
  bool WaitForEndOf(const Mp4Reply& reply);

  bool IsReleased() const;

  std::string body_;
  std::vector<Mp4Reply> replies_;
  std::map<std::string, Mp4Reply> replies_at_;  // by path; guarded by mutex_
  std::size_t answered_ = 0;                    // guarded by mutex_
  bool released_ = false;                       // guarded by mutex_
};

#endif  // TESTS_SUPPORT_MP4_SERVER_H_
