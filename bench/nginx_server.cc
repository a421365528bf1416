#include "bench/nginx_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <thread>
#include <utility>

namespace {

namespace fs = std::filesystem;

sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

// Returns a port on which nothing listens at the moment.
std::uint16_t FreePort() {
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof(address);
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool bound = bind(probe, plain, size) == 0 && getsockname(probe, plain, &size) == 0;
  close(probe);
  return bound ? ntohs(address.sin_port) : std::uint16_t{0};
}

bool Listens(std::uint16_t port) {
  const sockaddr_in address = Loopback(port);
  const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool connected =
      connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(probe);
  return connected;
}

void WriteConfig(const fs::path& directory, std::uint16_t port) {
  std::ofstream config(directory / "nginx.conf");
  if (geteuid() == 0)
    config << "user root;\n";  // other users may not be able to read the directory
  config << "daemon off;\nmaster_process off;\npid nginx.pid;\nerror_log error.log;\nevents {}\n"
            "http {\n  access_log off;\n  sendfile on;\n";
  for (const char* const what : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    config << "  " << what << "_temp_path temp_" << what << ";\n";
  }
  config << "  server {\n    listen 127.0.0.1:" << port << ";\n    root www;\n  }\n}\n";
}

}  // namespace

NginxServer::NginxServer(fs::path directory) : directory_(std::move(directory)) {
  fs::create_directories(directory_ / "www");
}

NginxServer::~NginxServer() { Stop(); }

void NginxServer::Put(const std::string& name, const void* bytes, std::size_t size) const {
  std::ofstream file(directory_ / "www" / name, std::ios::binary);
  file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
}

// Another program may take the port first; then another port is tried.
bool NginxServer::Start() {
  constexpr int kAttempts = 20;
  for (int i = 0; i < kAttempts; ++i) {
    if (Launch()) return true;
    Stop();
  }
  std::fprintf(stderr, "nginx does not start; see %s\n", (directory_ / "error.log").c_str());
  return false;
}

std::string NginxServer::Url(const std::string& name) const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/" + name;
}

bool NginxServer::Launch() {
  port_ = FreePort();
  WriteConfig(directory_, port_);
  process_ = fork();
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    execlp("nginx", "nginx", "-p", directory_.c_str(), "-e", "error.log", "-c", "nginx.conf",
           nullptr);
    execl("/usr/sbin/nginx", "nginx", "-p", directory_.c_str(), "-e", "error.log", "-c",
          "nginx.conf", nullptr);  // Debian's path, which is not in every user's PATH
    _exit(1);
  }
  return process_ > 0 && WaitUntilListening();
}

// Waits until nginx accepts connections. Returns false if it has ended.
bool NginxServer::WaitUntilListening() const {
  while (!Listens(port_)) {
    if (waitpid(process_, nullptr, WNOHANG) != 0) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return waitpid(process_, nullptr, WNOHANG) == 0;  // otherwise another process listens there
}

void NginxServer::Stop() {
  if (process_ <= 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = -1;
}
