// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "support/http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace support {

namespace {

std::size_t contentLength(const std::string& head) {
  const std::string label = "Content-Length: ";
  const std::size_t start = head.find(label);
  return start == std::string::npos ? 0 : std::stoul(head.substr(start + label.size()));
}

}  // namespace

std::string ServerConnection::readRequest() const {
  std::string request;
  std::size_t wanted = std::string::npos;
  std::array<char, 65536> block;
  while (request.size() < wanted) {
    const ssize_t count = recv(fd, block.data(), block.size(), 0);
    if (count <= 0) {
      return request;
    }
    request.append(block.data(), static_cast<std::size_t>(count));
    const std::size_t end = request.find("\r\n\r\n");
    if (end != std::string::npos) {
      wanted = end + 4 + contentLength(request.substr(0, end + 2));
    }
  }
  return request;
}

void ServerConnection::send(const std::string& bytes) const {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count < 0) {
      return;
    }
    sent += static_cast<std::size_t>(count);
  }
}

bool ServerConnection::isOpenAfter(std::chrono::milliseconds wait) const {
  pollfd awaited{.fd = fd, .events = POLLIN, .revents = 0};
  std::array<char, 4096> block;
  return poll(&awaited, 1, static_cast<int>(wait.count())) == 0 ||
         recv(fd, block.data(), block.size(), 0) > 0;
}

void ServerConnection::waitForClose() const {
  std::array<char, 4096> block;
  while (recv(fd, block.data(), block.size(), 0) > 0) {
  }
}

HttpServer::HttpServer(std::vector<Behaviour> behaviours)
    : listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), port(0) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, size) != 0 || listen(listener, 16) != 0 ||
      getsockname(listener, generic, &size) != 0) {
    throw std::runtime_error("no server on the loopback interface");
  }
  port = ntohs(address.sin_port);
  thread = std::thread([this, todo = std::move(behaviours)] {
    std::size_t next = 0;
    while (!todo.empty()) {
      const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
      if (fd < 0) {
        return;
      }
      // A client may open a connection in reserve and close it unused: that one does not count.
      char first = 0;
      if (recv(fd, &first, 1, MSG_PEEK) > 0) {
        todo[next](ServerConnection(fd));
        next = std::min(next + 1, todo.size() - 1);
      }
      close(fd);
    }
  });
}

HttpServer::~HttpServer() {
  shutdown(listener, SHUT_RDWR);
  thread.join();
  close(listener);
}

std::string HttpServer::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port) + path;
}

HttpServer::Behaviour answer(const std::string& bytes) {
  return [bytes](const ServerConnection& connection) {
    connection.readRequest();
    connection.send(bytes);
  };
}

std::string reply(const std::string& status, const std::string& body, const std::string& headers) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\nConnection: close\r\n" + headers + "\r\n" + body;
}

}  // namespace support
