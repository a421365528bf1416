// A web server on a port that the system chooses. It answers every request with the same stream.
#ifndef TESTS_WINDOWS_LIBRARY_ONE_STREAM_SERVER_H_
#define TESTS_WINDOWS_LIBRARY_ONE_STREAM_SERVER_H_

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

class OneStreamServer {
 public:
  explicit OneStreamServer(std::vector<std::uint8_t> stream);
  ~OneStreamServer();
  OneStreamServer(const OneStreamServer&) = delete;
  OneStreamServer& operator=(const OneStreamServer&) = delete;

  // An address of the stream.
  std::string Url() const;

 private:
  void Serve() const;
  void Answer(std::uintptr_t connection) const;

  const std::vector<std::uint8_t> stream_;
  std::uintptr_t listener_;
  std::uint16_t port_;
  std::thread thread_;
};

#endif  // TESTS_WINDOWS_LIBRARY_ONE_STREAM_SERVER_H_
