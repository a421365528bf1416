// An HTTP server inside the test's process that serves one body in the ways a test asks for.
#ifndef TESTS_SUPPORT_TEST_SERVER_H_
#define TESTS_SUPPORT_TEST_SERVER_H_

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/local_server.h"

class TestServer : public LocalServer {
 public:
  TestServer();

  ~TestServer() { Close(); }

  // Set it before the first request.
  void Serve(const std::vector<std::uint8_t>& body) { body_.assign(body.begin(), body.end()); }
  void Serve(std::string body) { body_ = std::move(body); }

  // An address with this path, for example "/plain/a.ts", "/pieces/17/a.ts", "/cut/a.ts" (the first
  // half, then the connection ends), "/stall/a.ts" (the first half, then nothing), "/silent/a.ts"
  // (not even an answer), "/ends/17/a.ts" (the first 17 bytes, then the connection ends; a range
  // behind them is honoured), "/whole/17/a.ts" (the same, but every request is answered with the
  // body from its beginning, the second one with all of it), "/endless/a.ts" (the body over and
  // over), "/paced/17/a.ts" (pieces with pauses between them) or "/live/100/a.flv" (the first 100
  // bytes, then the rest over and over, a little at a time). Anything else is answered with an
  // error page that is no HTML.
  using LocalServer::Url;

  // Lets the second half of gated replies go.
  void Release() {
    {
      const std::lock_guard lock(mutex_);
      released_ = true;
    }
    changed_.notify_all();
  }

 private:
  explicit TestServer(Cold cold) : LocalServer(cold) { SetUpReplies(); }

  static bool WarmUp();

  void SetUpReplies();

  bool SendRestOnceReleased(httplib::DataSink& sink);

  // Chunked, without a length, in writes of `size` bytes.
  void SendInPieces(httplib::Response& response, std::size_t size);

  // The same with some forty pauses in all.
  void SendWithPauses(httplib::Response& response, std::size_t size);

  void SendLive(httplib::Response& response, std::size_t head);

  // Long enough that what was written before is read alone.
  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

  template <typename Then>
  void SendHalf(httplib::Response& response, Then then);

  // Breaks off at `end`, unless a range from there on was asked for.
  void SendUpTo(httplib::Response& response, std::size_t end);

  // As a server that knows no ranges. Breaks off at `end`, unless that is 0.
  void SendFromTheBeginning(httplib::Response& response, std::size_t end);

  // From the beginning, whatever range was asked for.
  void SendEndlessly(httplib::Response& response);

  static constexpr std::size_t kLivePiece = 1000;

  std::string body_;
  bool released_ = false;  // guarded by mutex_
};

#endif  // TESTS_SUPPORT_TEST_SERVER_H_
