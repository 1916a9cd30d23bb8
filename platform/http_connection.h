// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One HTTP request and the events of its reply on the main loop.

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

/// A POST request, ready to send. URL and header texts are UTF-8, the body is bytes.
struct HttpRequest {
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
};

/// The head of a reply.
struct HttpResponse {
  int statusCode;
};

/// Told of a reply: at most one head at a time, then its data in pieces as they arrive, then
/// exactly one end: one of the last three.
class HttpConnectionDelegate {
 public:
  virtual void connectionDidReceiveResponse(const HttpResponse& response) = 0;
  /// `data` is valid during the call only.
  virtual void connectionDidReceiveData(std::string_view data) = 0;
  /// The reply is complete, whatever its status.
  virtual void connectionDidFinishLoading() = 0;
  /// The connection failed before the reply was complete.
  virtual void connectionDidFailWithError() = 0;
  /// The connection was given up, because the reply is none that is accepted: it exceeds a bound,
  /// is compressed, or came before all was sent.
  virtual void connectionDidRefuseReply() = 0;

 protected:
  HttpConnectionDelegate() = default;
  HttpConnectionDelegate(const HttpConnectionDelegate&) = default;
  HttpConnectionDelegate& operator=(const HttpConnectionDelegate&) = default;
  ~HttpConnectionDelegate() = default;
};

/// A request under way, sent over HTTP/1.1 with certificate checks against the system's store and
/// through the system's proxy. It is sent once, and never again by itself. Redirects are followed,
/// but not from https to http. A reply fails that is not whole, takes longer than ten stall limits,
/// exceeds the bounds of HttpReplyReader, or comes before all was sent and is no refusal.
/// Destroying it, which must not be done from within one of its events, ends the request without a
/// further event.
class HttpConnection {
 public:
  HttpConnection() = default;
  virtual ~HttpConnection() = default;
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;
};

}  // namespace platform
