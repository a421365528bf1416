#include "tests/support/hls_server.h"

#include <httplib.h>

#include "common/clock.h"

namespace stream {

HlsServer::HlsServer() : LocalServer(WarmUp) {
  SetUpReplies();
  Open();
}

bool HlsServer::WarmUp() {
  HlsServer server{Cold()};
  server.Put("/whole", std::string("warm"));
  server.Put("/gated", GatedAfter(1, Whole(std::string("warm"))));
  server.Put("/moved", RedirectTo("/whole"));
  server.Release("/gated");
  server.Open();
  return server.Answers({"/whole", "/gated", "/moved", "/nowhere"});
}

void HlsServer::SetUpReplies() {
  server_->Get(".*", [this](const auto& request, auto& response) {
    // Look up the reply before the request is recorded: a reply that a test sets after it has seen
    // the request must not apply to that request.
    const SharedReply reply = ReplyTo(request.path);
    Remember(request);
    if (reply != nullptr && reply->is_blocked && !WaitForRelease(request.path)) return;
    Answer(request.path, reply, response);
  });
}

HlsServer::SharedReply HlsServer::ReplyTo(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = replies_.find(path);
  return found == replies_.end() ? nullptr : found->second;
}

void HlsServer::Answer(const std::string& path, const SharedReply& reply,
                       httplib::Response& response) {
  if (reply == nullptr) {
    response.status = 404;
    response.set_content("no such page", "text/plain");
  } else if (reply->then == Reply::Then::kNoReply) {
    WaitForEnd();
  } else if (!reply->location.empty()) {
    response.set_redirect(reply->location);
  } else {
    response.status = reply->status;
    Send(path, reply, response);
  }
}

void HlsServer::Send(const std::string& path, const SharedReply& reply,
                     httplib::Response& response) {
  if (reply->then == Reply::Then::kRepeatForever) return Trickle(path, reply, response);
  if (reply->body.empty()) return response.set_content("", "text/plain");
  response.set_content_provider(
      reply->body.size(), "application/octet-stream",
      [this, path, reply](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        const std::string& body = reply->body;
        if (offset < reply->sent) return sink.write(body.data() + offset, reply->sent - offset);
        return Continues(path, reply->then) &&
               sink.write(body.data() + offset, body.size() - offset);
      });
}

void HlsServer::Trickle(const std::string& path, const SharedReply& reply,
                        httplib::Response& response) {
  response.set_chunked_content_provider(
      "application/octet-stream", [this, path, reply](std::size_t, httplib::DataSink& sink) {
        const bool sent = sink.write(reply->body.data(), reply->body.size());
        {
          const std::lock_guard lock(mutex_);
          ++trickles_[path];
          if (!sent) hung_up_.insert(path);
        }
        SleepFor(reply->pause);
        return sent && !IsEnding();
      });
}

bool HlsServer::WaitForRelease(const std::string& path) {
  return WaitFor([&] { return released_.contains(path); });
}

bool HlsServer::Stall(const std::string& path) {
  {
    const std::lock_guard lock(mutex_);
    stalled_.insert(path);
  }
  return WaitForEnd();
}

bool HlsServer::Continues(const std::string& path, Reply::Then then) {
  switch (then) {
    case Reply::Then::kRest:
      return true;
    case Reply::Then::kRestOnceReleased:
      return WaitForRelease(path);
    case Reply::Then::kNothing:
      return Stall(path);
    default:
      return false;
  }
}

}  // namespace stream
