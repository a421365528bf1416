#include "tests/support/mp4_server.h"

#include <httplib.h>

Mp4Server::Mp4Server() : LocalServer(WarmUp) {
  SetUpReplies();
  Open();
}

bool Mp4Server::WarmUp() {
  Mp4Server server{Cold()};
  server.Serve(std::vector<std::uint8_t>(100));
  server.Answer({{}, {}, {.ranges = false}, {.ranges = false}, {.status = 503}, {.status = 416}});
  server.Open();
  const std::string path = "/a.mp4";
  return server.Answers({path, path, path, path});
}

void Mp4Server::SetUpReplies() {
  server_->Get("/.*\\.mp4", [this](const auto& request, auto& response) {
    const Mp4Reply reply = NextReply(request.path);
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

Mp4Reply Mp4Server::NextReply(const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (const auto found = replies_at_.find(path); found != replies_at_.end()) return found->second;
  if (replies_.empty()) return {};
  return replies_[std::min(answered_++, replies_.size() - 1)];
}

std::size_t Mp4Server::FirstByte(const std::string& range) {
  const std::size_t at = range.find_first_of("0123456789");
  return at == std::string::npos ? 0 : std::stoul(range.substr(at));
}

void Mp4Server::SendPage(httplib::Response& response, int status, const std::string& page) {
  response.status = status;
  response.set_chunked_content_provider("text/plain", [page](auto, auto& sink) {
    sink.write(page.data(), page.size());
    sink.done();
    return true;
  });
}

void Mp4Server::SendRange(httplib::Response& response, const Mp4Reply& reply) {
  response.set_content_provider(body_.size(), "video/mp4",
                                [this, reply](std::size_t at, std::size_t, auto& sink) {
                                  return SendChunk(reply, at, sink) != 0;
                                });
}

void Mp4Server::SendAll(httplib::Response& response, const Mp4Reply& reply) {
  response.status = 200;
  response.set_chunked_content_provider(
      "video/mp4", [this, reply, at = std::size_t{0}](auto, auto& sink) mutable {
        if (at == body_.size()) {
          sink.done();
          return true;
        }
        const std::size_t sent = SendChunk(reply, at, sink);
        at += sent;
        return sent != 0;
      });
}

std::size_t Mp4Server::SendChunk(const Mp4Reply& reply, std::size_t at, httplib::DataSink& sink) {
  const bool held = at >= reply.until && !(reply.end == Mp4Reply::End::kGate && IsReleased());
  if (held && !WaitForEndOf(reply)) return 0;
  const std::size_t limit = at < reply.until ? std::min(reply.until, body_.size()) : body_.size();
  const std::size_t size = std::min(reply.piece, limit - at);
  if (IsEnding() || !sink.write(body_.data() + at, size)) return 0;
  if (reply.pause.count() > 0) std::this_thread::sleep_for(reply.pause);
  return size;
}

bool Mp4Server::WaitForEndOf(const Mp4Reply& reply) {
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

bool Mp4Server::IsReleased() const {
  const std::lock_guard lock(mutex_);
  return released_;
}
