// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A real HTTP server on the loopback interface that does to its clients what a test asks for.

#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace support {

/// One accepted connection. What the client does not take is lost.
class ServerConnection {
 public:
  explicit ServerConnection(int socketDescriptor) : fd(socketDescriptor) {}
  /// The whole request: head, and the body of the length that the head promises.
  std::string readRequest() const;
  void send(const std::string& bytes) const;
  /// Waits for so long; whether the client is still there then. What it has sent is dropped.
  bool isOpenAfter(std::chrono::milliseconds wait) const;
  /// Waits until the client has closed its side.
  void waitForClose() const;

 private:
  int fd;
};

class HttpServer {
 public:
  using Behaviour = std::function<void(const ServerConnection&)>;

  /// The n-th connection is treated by the n-th behaviour, then closed; after the last one the
  /// server closes.
  explicit HttpServer(std::vector<Behaviour> behaviours);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  std::string url(const std::string& path = "/diagnosticsubmit") const;

 private:
  int listener;
  int port;
  std::thread thread;
};

/// Reads a request and answers with `bytes` as they go over the wire.
HttpServer::Behaviour answer(const std::string& bytes);

/// A reply with a body and its length.
std::string reply(const std::string& status, const std::string& body,
                  const std::string& headers = "");

}  // namespace support
