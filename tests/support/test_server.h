// An HTTP server inside the test's process, on a port of the system's choice, that serves one body
// in the ways a test asks for and remembers what it was asked.
#ifndef TESTS_SUPPORT_TEST_SERVER_H_
#define TESTS_SUPPORT_TEST_SERVER_H_

#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class TestServer {
 public:
  struct Request {
    std::string path;
    std::string range;
    std::string user_agent;
    bool has_user_agent;
  };

  TestServer() : TestServer(Cold()) {
    static const bool warm = WarmUp();
    if (!warm) throw std::runtime_error("the test server does not answer");
    Open();
  }

  ~TestServer() {
    {
      const std::lock_guard lock(mutex_);
      ending_ = true;
    }
    changed_.notify_all();
    server_.stop();
    thread_.join();
  }

  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  // Set it before the first request.
  void Serve(const std::vector<std::uint8_t>& body) { body_.assign(body.begin(), body.end()); }
  void Serve(std::string body) { body_ = std::move(body); }

  // An address with this path, for example "/plain/a.ts", "/pieces/17/a.ts", "/cut/a.ts" (the first
  // half, then the connection ends), "/stall/a.ts" (the first half, then nothing), "/silent/a.ts"
  // (not even an answer) or "/endless/a.ts" (the body over and over). Anything else is answered
  // with an error page that is no HTML.
  std::string Url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }

  // Lets the second half of gated replies go.
  void Release() {
    {
      const std::lock_guard lock(mutex_);
      released_ = true;
    }
    changed_.notify_all();
  }

  std::vector<Request> Requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  std::size_t CountRequests(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(
        std::count_if(requests_.begin(), requests_.end(),
                      [&path](const Request& request) { return request.path == path; }));
  }

  bool WaitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20),
                             [&] { return requests_.size() >= count; });
  }

 private:
  struct Cold {};  // a server that is not open yet

  explicit TestServer(Cold /*unused*/) {
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
    server_.set_error_handler(
        [](const auto&, auto& response) { response.set_content("no such page", "text/plain"); });
    server_.set_keep_alive_max_count(1);
  }

  void Open() {
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }

  // The library of the server makes its tables at their first use, which the thread sanitizer,
  // since the library is not built with it, cannot tell from a race. So each kind of reply is made
  // once by a server whose threads have ended before those of the first real one begin.
  static bool WarmUp() {
    TestServer server{Cold()};
    server.Serve(std::string("warm"));
    server.Open();
    server.Release();
    httplib::Client client("127.0.0.1", server.port_);
    bool answered = true;
    for (const char* path : {"/plain/a", "/pieces/1/a", "/gated/a", "/nowhere"}) {
      answered = client.Get(path) && answered;
      answered = client.Get(path, {{"Range", "bytes=0-"}}) && answered;
    }
    return answered;
  }

  void Remember(const httplib::Request& request) {
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back({request.path, request.get_header_value("Range"),
                           request.get_header_value("User-Agent"),
                           request.has_header("User-Agent")});
    }
    changed_.notify_all();
  }

  // Returns false, which ends the reply, when the test is over.
  bool WaitForEnd() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return ending_; });
    return false;
  }

  bool SendRestOnceReleased(httplib::DataSink& sink) {
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return released_ || ending_; });
    }
    const std::size_t half = body_.size() / 2;
    return sink.write(body_.data() + half, body_.size() - half);
  }

  bool IsEnding() const {
    const std::lock_guard lock(mutex_);
    return ending_;
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

  template <typename Then>
  void SendHalf(httplib::Response& response, Then then) {
    response.set_content_provider(
        body_.size(), "video/mp2t", [this, then](std::size_t offset, std::size_t, auto& sink) {
          const std::size_t half = body_.size() / 2;
          return offset < half ? sink.write(body_.data() + offset, half - offset) : then(sink);
        });
  }

  void SendEndlessly(httplib::Response& response) {
    response.set_chunked_content_provider("video/mp2t", [this](auto, auto& sink) {
      return !IsEnding() && sink.write(body_.data(), body_.size());
    });
  }

  httplib::Server server_;
  std::string body_;
  int port_ = 0;
  std::thread thread_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Request> requests_;
  bool released_ = false;
  bool ending_ = false;
};

#endif  // TESTS_SUPPORT_TEST_SERVER_H_
