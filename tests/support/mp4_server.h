// An HTTP server inside the test's process that answers each request for its one body as a test
// has laid down.
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

class Mp4Server : public LocalServer {
 public:
  Mp4Server();

  ~Mp4Server() { Close(); }

  // Both are set before the first request. The first request gets the first reply and so on; the
  // last one counts for all that follow.
  void Serve(const std::vector<std::uint8_t>& body) { body_.assign(body.begin(), body.end()); }
  void Answer(std::vector<Mp4Reply> replies) { replies_ = std::move(replies); }

  // Every request for `path` is answered so, from now on.
  void AnswerAt(const std::string& path, const Mp4Reply& reply) {
    const std::lock_guard lock(mutex_);
    replies_at_[path] = reply;
  }

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

  static bool WarmUp();

  void SetUpReplies();

  Mp4Reply NextReply(const std::string& path);

  // Of "bytes=N-".
  static std::size_t FirstByte(const std::string& range);

  // In chunks, which the library never cuts to the range that was asked for.
  static void SendPage(httplib::Response& response, int status, const std::string& page);

  // The library tells the range in its answer, and asks for what lies in it.
  void SendRange(httplib::Response& response, const Mp4Reply& reply);

  void SendAll(httplib::Response& response, const Mp4Reply& reply);

  // Returns how many bytes it sent; 0 ends the reply.
  std::size_t SendPiece(const Mp4Reply& reply, std::size_t at, httplib::DataSink& sink);

  // Whether the reply goes on afterwards.
  bool AwaitEndOf(const Mp4Reply& reply);

  bool IsReleased() const;

  std::string body_;
  std::vector<Mp4Reply> replies_;
  std::map<std::string, Mp4Reply> replies_at_;  // by path; guarded by mutex_
  std::size_t asked_ = 0;                       // guarded by mutex_
  bool released_ = false;                       // guarded by mutex_
};

#endif  // TESTS_SUPPORT_MP4_SERVER_H_
