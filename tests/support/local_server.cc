#include "tests/support/local_server.h"

#include <httplib.h>

#include <algorithm>
#include <limits>
#include <map>
#include <stdexcept>

LocalServer::LocalServer(Cold /*unused*/) : server_(std::make_unique<httplib::Server>()) {
  server_->set_keep_alive_max_count(1);
}

LocalServer::LocalServer(bool (*warm_up)()) : LocalServer(Cold()) {
  static std::mutex mutex;
  static std::map<bool (*)(), bool> warm;  // guarded by mutex
  const std::lock_guard lock(mutex);
  if (!warm.contains(warm_up)) warm[warm_up] = warm_up();
  if (!warm[warm_up]) throw std::runtime_error("the test server does not answer");
}

LocalServer::~LocalServer() { Close(); }

void LocalServer::Open() {
  port_ = server_->bind_to_any_port("127.0.0.1");
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  while (!server_->is_running()) std::this_thread::yield();
}

// Headers and body are written separately. Without TCP_NODELAY the body would wait until the client
// has acknowledged the headers.
void LocalServer::KeepConnections() {
  server_->set_keep_alive_max_count(std::numeric_limits<std::size_t>::max());
  server_->set_tcp_nodelay(true);
}

void LocalServer::Close() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  server_->stop();
  if (thread_.joinable()) thread_.join();
}

bool LocalServer::Answers(const std::vector<std::string>& paths) const {
  httplib::Client client("127.0.0.1", port_);
  bool answered = true;
  for (const std::string& path : paths) {
    answered = client.Get(path) && answered;
    answered = client.Get(path, {{"Range", "bytes=0-"}}) && answered;
  }
  return answered;
}

void LocalServer::Remember(const httplib::Request& request) {
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back({request.path, request.get_header_value("Range"),
                         request.get_header_value("User-Agent"), request.has_header("User-Agent")});
  }
  changed_.notify_all();
}

std::size_t LocalServer::CountLocked(const std::string& path) const {
  return static_cast<std::size_t>(
      std::count_if(requests_.begin(), requests_.end(),
                    [&path](const Request& request) { return request.path == path; }));
}
