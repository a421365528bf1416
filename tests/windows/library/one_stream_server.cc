#include "tests/windows/library/one_stream_server.h"

#include <gtest/gtest.h>
#include <winsock2.h>

#include <array>
#include <cstddef>
#include <utility>

namespace {

void SendAll(SOCKET connection, const char* bytes, std::size_t size) {
  while (size > 0) {
    const int sent = send(connection, bytes, static_cast<int>(size), 0);
    if (sent <= 0) return;
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

// Reads up to the empty line that ends a request, or to the end of the connection.
void ReadRequest(SOCKET connection) {
  std::string request;
  std::array<char, 1024> buffer;
  while (request.find("\r\n\r\n") == std::string::npos) {
    const int length = recv(connection, buffer.data(), static_cast<int>(buffer.size()), 0);
    if (length <= 0) return;
    request.append(buffer.data(), static_cast<std::size_t>(length));
  }
}

}  // namespace

OneStreamServer::OneStreamServer(std::vector<std::uint8_t> stream) : stream_(std::move(stream)) {
  WSADATA data;
  EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  listener_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  EXPECT_EQ(listen(listener_, SOMAXCONN), 0);
  int size = sizeof(address);
  EXPECT_EQ(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size), 0);
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Serve(); });
}

OneStreamServer::~OneStreamServer() {
  closesocket(listener_);  // ends the blocked accept
  thread_.join();
  WSACleanup();
}

std::string OneStreamServer::Url() const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/stream.ts";
}

void OneStreamServer::Serve() const {
  for (;;) {
    const SOCKET connection = accept(listener_, nullptr, nullptr);
    if (connection == INVALID_SOCKET) return;
    Answer(connection);
    closesocket(connection);
  }
}

void OneStreamServer::Answer(std::uintptr_t connection) const {
  ReadRequest(connection);
  const std::string head =
      "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(stream_.size()) +
      "\r\n\r\n";
  SendAll(connection, head.data(), head.size());
  SendAll(connection, reinterpret_cast<const char*>(stream_.data()), stream_.size());
  shutdown(connection, SD_SEND);
}
