// An HTTP server in the test's process that serves one body in several ways.
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

  // Call one of these before the first request.
  void Serve(const std::vector<std::uint8_t>& body) { body_.assign(body.begin(), body.end()); }
  void Serve(std::string body) { body_ = std::move(body); }

  // An address with this path, which selects how the body is served:
  //
  //   /plain/a.ts      whole
  //   /pieces/17/a.ts  in writes of 17 bytes
  //   /paced/17/a.ts   the same, with pauses
  //   /cut/a.ts        the first half, then the connection ends
  //   /stall/a.ts      the first half, then nothing
  //   /gated/a.ts      the first half, and the rest after Release
  //   /silent/a.ts     no reply at all
  //   /ends/17/a.ts    the first 17 bytes, then the connection ends; ranges after them are honored
  //   /whole/17/a.ts   the first 17 bytes, then the connection ends; later requests get the whole
  //                    body, whatever range they ask for
  //   /endless/a.ts    the body over and over
  //   /live/100/a.flv  the first 100 bytes, then the rest over and over, a little at a time
  //
  // Anything else gets an error page that is not HTML.
  using LocalServer::Url;

  // Sends the second half of gated replies.
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
  void SendInChunks(httplib::Response& response, std::size_t size);

  // The same with about forty pauses in all.
  void SendWithPauses(httplib::Response& response, std::size_t size);

  void SendLive(httplib::Response& response, std::size_t head);

  // Long enough for the client to read the bytes written before separately.
  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

  template <typename Then>
  void SendHalf(httplib::Response& response, Then then);

  // Disconnects at `end`, unless the requested range starts there or later.
  void SendUpTo(httplib::Response& response, std::size_t end);

  // Ignores ranges. Disconnects at `end`, unless it is 0.
  void SendFromTheBeginning(httplib::Response& response, std::size_t end);

  // Sends from the beginning, whatever range is requested.
  void SendEndlessly(httplib::Response& response);

  static constexpr std::size_t kLiveChunk = 1000;

  std::string body_;
  bool released_ = false;  // guarded by mutex_
};

#endif  // TESTS_SUPPORT_TEST_SERVER_H_
