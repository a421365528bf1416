#include "tests/support/test_server.h"

#include <httplib.h>

TestServer::TestServer() : LocalServer(WarmUp) {
  SetUpReplies();
  Open();
}

bool TestServer::WarmUp() {
  TestServer server{Cold()};
  server.Serve(std::string("warm"));
  server.Open();
  server.Release();
  return server.Answers(
      {"/plain/a", "/pieces/1/a", "/paced/1/a", "/gated/a", "/ends/0/a", "/whole/0/a", "/nowhere"});
}

void TestServer::SetUpReplies() {
  server_->Get("/plain.*", [this](const auto& request, auto& response) {
    Remember(request);
    response.set_content(body_, "video/mp2t");  // the HTTP library handles ranges
  });
  server_->Get("/pieces/(\\d+)/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendInChunks(response, std::stoul(request.matches[1]));
  });
  server_->Get("/cut/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendHalf(response, [](auto&) { return false; });
  });
  server_->Get("/ends/(\\d+)/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendUpTo(response, std::stoul(request.matches[1]));
  });
  server_->Get("/whole/(\\d+)/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendFromTheBeginning(response, Requests().size() == 1 ? std::stoul(request.matches[1]) : 0);
  });
  server_->Get("/stall/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendHalf(response, [this](auto&) { return WaitForEnd(); });
  });
  server_->Get("/gated/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendHalf(response, [this](auto& sink) { return SendRestOnceReleased(sink); });
  });
  server_->Get("/silent/.*", [this](const auto& request, auto&) {
    Remember(request);
    WaitForEnd();
  });
  server_->Get("/endless/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendEndlessly(response);
  });
  server_->Get("/paced/(\\d+)/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendWithPauses(response, std::stoul(request.matches[1]));
  });
  server_->Get("/live/(\\d+)/.*", [this](const auto& request, auto& response) {
    Remember(request);
    SendLive(response, std::stoul(request.matches[1]));
  });
  server_->set_error_handler(
      [](const auto&, auto& response) { response.set_content("no such page", "text/plain"); });
}

bool TestServer::SendRestOnceReleased(httplib::DataSink& sink) {
  WaitFor([this] { return released_; });
  const std::size_t half = body_.size() / 2;
  return sink.write(body_.data() + half, body_.size() - half);
}

void TestServer::SendInChunks(httplib::Response& response, std::size_t size) {
  response.set_chunked_content_provider("video/mp2t", [this, size](auto, auto& sink) {
    for (std::size_t at = 0; at < body_.size(); at += size) {
      if (!sink.write(body_.data() + at, std::min(size, body_.size() - at))) return false;
    }
    sink.done();
    return true;
  });
}

void TestServer::SendWithPauses(httplib::Response& response, std::size_t size) {
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

void TestServer::SendLive(httplib::Response& response, std::size_t head) {
  response.status = 200;  // from the beginning, whatever range is requested
  response.set_chunked_content_provider(
      "video/mp2t", [this, head, at = std::size_t{0}](auto, auto& sink) mutable {
        const std::size_t size = std::min(at == 0 ? head : kLiveChunk, body_.size() - at);
        if (IsEnding() || !sink.write(body_.data() + at, size)) return false;
        at += size;
        if (at == body_.size()) at = head;
        Pause();
        return true;
      });
}

template <typename Then>
void TestServer::SendHalf(httplib::Response& response, Then then) {
  response.set_content_provider(
      body_.size(), "video/mp2t", [this, then](std::size_t offset, std::size_t, auto& sink) {
        const std::size_t half = body_.size() / 2;
        return offset < half ? sink.write(body_.data() + offset, half - offset) : then(sink);
      });
}

void TestServer::SendUpTo(httplib::Response& response, std::size_t end) {
  response.set_content_provider(
      body_.size(), "video/mp2t", [this, end](std::size_t offset, std::size_t length, auto& sink) {
        const bool breaks_off = offset < end;
        const bool sent = sink.write(body_.data() + offset, breaks_off ? end - offset : length);
        return sent && !breaks_off;
      });
}

void TestServer::SendFromTheBeginning(httplib::Response& response, std::size_t end) {
  response.status = 200;
  response.set_chunked_content_provider("video/mp2t", [this, end](auto, auto& sink) {
    if (!sink.write(body_.data(), end == 0 ? body_.size() : end) || end != 0) return false;
    sink.done();
    return true;
  });
}

void TestServer::SendEndlessly(httplib::Response& response) {
  response.status = 200;
  response.set_chunked_content_provider("video/mp2t", [this](auto, auto& sink) {
    return !IsEnding() && sink.write(body_.data(), body_.size());
  });
}
