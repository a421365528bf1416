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

class TestServer final : public LocalServer {
 public:
  TestServer() : LocalServer(WarmUp) {
    SetUpReplies();
    Open();
  }

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

  static bool WarmUp() {
    TestServer server{Cold()};
    server.Serve(std::string("warm"));
    server.Open();
    server.Release();
    return server.Answers({"/plain/a", "/pieces/1/a", "/paced/1/a", "/gated/a", "/ends/0/a",
                           "/whole/0/a", "/nowhere"});
  }

  void SetUpReplies() {
    server_.Get("/plain.*", [this](const auto& request, auto& response) {
      Remember(request);
      response.set_content(body_, "video/mp2t");  // ranges are honoured by the server itself
    });
    server_.Get("/pieces/(\\d+)/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendInPieces(response, std::stoul(request.matches[1]));
    });
    server_.Get("/cut/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendHalf(response, [](auto&) { return false; });
    });
    server_.Get("/ends/(\\d+)/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendUpTo(response, std::stoul(request.matches[1]));
    });
    server_.Get("/whole/(\\d+)/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendFromTheBeginning(response, Requests().size() == 1 ? std::stoul(request.matches[1]) : 0);
    });
    server_.Get("/stall/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendHalf(response, [this](auto&) { return WaitForEnd(); });
    });
    server_.Get("/gated/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendHalf(response, [this](auto& sink) { return SendRestOnceReleased(sink); });
    });
    server_.Get("/silent/.*", [this](const auto& request, auto&) {
      Remember(request);
      WaitForEnd();
    });
    server_.Get("/endless/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendEndlessly(response);
    });
    server_.Get("/paced/(\\d+)/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendWithPauses(response, std::stoul(request.matches[1]));
    });
    server_.Get("/live/(\\d+)/.*", [this](const auto& request, auto& response) {
      Remember(request);
      SendLive(response, std::stoul(request.matches[1]));
    });
    server_.set_error_handler(
        [](const auto&, auto& response) { response.set_content("no such page", "text/plain"); });
  }

  bool SendRestOnceReleased(httplib::DataSink& sink) {
    WaitFor([this] { return released_; });
    const std::size_t half = body_.size() / 2;
    return sink.write(body_.data() + half, body_.size() - half);
  }

  // Chunked, without a length, in writes of `size` bytes.
  void SendInPieces(httplib::Response& response, std::size_t size) {
    response.set_chunked_content_provider("video/mp2t", [this, size](auto, auto& sink) {
      for (std::size_t at = 0; at < body_.size(); at += size) {
        if (!sink.write(body_.data() + at, std::min(size, body_.size() - at))) return false;
      }
      sink.done();
      return true;
    });
  }

  // The same with some forty pauses in all.
  void SendWithPauses(httplib::Response& response, std::size_t size) {
    const std::size_t between = std::max(size, body_.size() / 40 / size * size);
    response.set_chunked_content_provider("video/mp2t", [this, size, between](auto, auto& sink) {
      for (std::size_t at = 0; at < body_.size(); at += size) {
        if (at != 0 && at % between == 0) Pause();
        if (!sink.write(body_.data() + at, std::min(size, body_.size() - at))) return false;
      }
      sink.done();
      return true;
    });
  }

  void SendLive(httplib::Response& response, std::size_t head) {
    response.set_chunked_content_provider(
        "video/mp2t", [this, head, at = std::size_t{0}](auto, auto& sink) mutable {
          const std::size_t size = std::min(at == 0 ? head : kLivePiece, body_.size() - at);
          if (IsEnding() || !sink.write(body_.data() + at, size)) return false;
          at += size;
          if (at == body_.size()) at = head;
          Pause();
          return true;
        });
  }

  // Long enough that what was written before is read alone.
  static void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

  template <typename Then>
  void SendHalf(httplib::Response& response, Then then) {
    response.set_content_provider(
        body_.size(), "video/mp2t", [this, then](std::size_t offset, std::size_t, auto& sink) {
          const std::size_t half = body_.size() / 2;
          return offset < half ? sink.write(body_.data() + offset, half - offset) : then(sink);
        });
  }

  // Breaks off at `end`, unless a range from there on was asked for.
  void SendUpTo(httplib::Response& response, std::size_t end) {
    response.set_content_provider(body_.size(), "video/mp2t",
                                  [this, end](std::size_t offset, std::size_t length, auto& sink) {
                                    const bool breaks_off = offset < end;
                                    const bool sent = sink.write(
                                        body_.data() + offset, breaks_off ? end - offset : length);
                                    return sent && !breaks_off;
                                  });
  }

  // As a server that knows no ranges. Breaks off at `end`, unless that is 0.
  void SendFromTheBeginning(httplib::Response& response, std::size_t end) {
    response.status = 200;
    response.set_chunked_content_provider("video/mp2t", [this, end](auto, auto& sink) {
      if (!sink.write(body_.data(), end == 0 ? body_.size() : end) || end != 0) return false;
      sink.done();
      return true;
    });
  }

  // From the beginning, whatever range was asked for.
  void SendEndlessly(httplib::Response& response) {
    response.status = 200;
    response.set_chunked_content_provider("video/mp2t", [this](auto, auto& sink) {
      return !IsEnding() && sink.write(body_.data(), body_.size());
    });
  }

  static constexpr std::size_t kLivePiece = 1000;

  std::string body_;
  bool released_ = false;  // guarded by mutex_
};

#endif  // TESTS_SUPPORT_TEST_SERVER_H_
