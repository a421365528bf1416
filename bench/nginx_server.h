// nginx in a process of its own, on a loopback port of its own choice, for benchmarks over HTTP: a
// server that people use, and one whose memory and threads are not those of what is measured.
#ifndef BENCH_NGINX_SERVER_H_
#define BENCH_NGINX_SERVER_H_

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

// Serves the files in the folder "www" of a directory, which it makes; what nginx itself writes
// lies beside it. Ends with the object.
class NginxServer {
 public:
  explicit NginxServer(std::filesystem::path directory);
  ~NginxServer();
  NginxServer(const NginxServer&) = delete;
  NginxServer& operator=(const NginxServer&) = delete;

  void Put(const std::string& name, const void* bytes, std::size_t size) const;

  // False, with a line on the error output, when it cannot be started.
  bool Start();

  std::string Url(const std::string& name) const;  // once it has started

 private:
  bool Launch();
  bool ComesUp() const;
  void Stop();

  const std::filesystem::path directory_;
  std::uint16_t port_ = 0;
  pid_t process_ = -1;
};

#endif  // BENCH_NGINX_SERVER_H_
