// Runs nginx as a separate process on a free loopback port, for benchmarks over HTTP. It is a
// widely used server, and its memory and threads are not part of the measurement.
#ifndef BENCH_NGINX_SERVER_H_
#define BENCH_NGINX_SERVER_H_

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

// Serves the files in the folder "www" of `directory`, which it creates. nginx writes its own files
// beside that folder. The destructor ends the process.
class NginxServer {
 public:
  explicit NginxServer(std::filesystem::path directory);
  ~NginxServer();
  NginxServer(const NginxServer&) = delete;
  NginxServer& operator=(const NginxServer&) = delete;

  void Put(const std::string& name, const void* bytes, std::size_t size) const;

  // Returns false and prints a line on standard error if it cannot be started.
  bool Start();

  std::string Url(const std::string& name) const;  // valid once started

 private:
  bool Launch();
  bool WaitUntilListening() const;
  void Stop();

  const std::filesystem::path directory_;
  std::uint16_t port_ = 0;
  pid_t process_ = -1;
};

#endif  // BENCH_NGINX_SERVER_H_
