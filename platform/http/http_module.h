// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The interface between the program and its module with libcurl.

#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/event_loop/event_loop.h"
#include "platform/http/http_connection.h"

namespace platform {

/// What a request of the module needs of the program.
struct HttpContext {
  EventLoop& loop;
  HttpRequest request;
  HttpConnectionDelegate& delegate;
  /// Without progress for so long, the request fails.
  std::chrono::milliseconds stallLimit;
  /// The URL of the proxy; empty for what the environment says.
  std::string proxy;
  /// Logs why a request failed, in UTF-8.
  std::function<void(const std::string& reason)> logFailure;
};

/// The module's one function: sends a request to a URL of http or https, and returns the new
/// connection. The context is moved from.
using HttpModuleFunction = HttpConnection*(HttpContext& context);
inline constexpr const char* httpModuleFunction = "halvikSendHttpRequest";
inline constexpr const char* httpModuleName = "halvik-upload.so";

}  // namespace platform
