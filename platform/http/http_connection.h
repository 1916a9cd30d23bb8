// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One HTTP request and the events of its reply on the event loop. Main thread only.

#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

class EventLoop;

/// A POST request. URL and content type are UTF-8, the body is bytes.
struct HttpRequest {
  std::string url;
  std::string contentType;
  std::string body;
};

/// The head of a reply.
struct HttpResponse {
  int statusCode;
};

/// Receives the events of a reply: its head, its data in chunks as they arrive, then exactly one
/// end, which is one of the last three.
class HttpConnectionDelegate {
 public:
  virtual void connectionDidReceiveResponse(const HttpResponse& response) = 0;
  /// `data` is valid during the call only.
  virtual void connectionDidReceiveData(std::string_view data) = 0;
  /// The reply is complete, whatever its status.
  virtual void connectionDidFinishLoading() = 0;
  /// The connection failed before the reply was complete.
  virtual void connectionDidFailWithError() = 0;
  /// The connection was closed because the reply exceeds a bound, is compressed, or came before the
  /// whole request was sent.
  virtual void connectionDidRefuseReply() = 0;

 protected:
  ~HttpConnectionDelegate() = default;
};

/// A request under way. Destroying it, which must not be done from within one of its events, ends
/// the request without a further event.
class HttpConnection {
 public:
  HttpConnection() = default;
  virtual ~HttpConnection() = default;
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;
};

/// Loads the module with libcurl, if it is not loaded yet, and returns the error, or "". Loading
/// takes as long as the rest of a start, so a run that uploads calls this while its commands run.
std::string loadHttpModule();

/// Sends `request` once, over HTTP/1.1, with certificate checks, through the proxy of the
/// environment or else of the desktop. It fails, and logs why, after `stallLimit` without progress,
/// when the reply takes ten times that, or when a redirect leads from https to http. Returns
/// nothing if the module cannot be loaded, or the URL is not one of http or https with a host.
std::unique_ptr<HttpConnection> sendHttpRequest(EventLoop& loop, HttpRequest request,
                                                HttpConnectionDelegate& delegate,
                                                std::chrono::milliseconds stallLimit);

}  // namespace platform
