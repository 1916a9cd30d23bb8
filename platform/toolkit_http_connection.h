// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// HTTP over the toolkit's sockets, with its TLS and proxies.

#pragma once

#include <chrono>
#include <memory>

#include "platform/http_connection.h"

namespace platform {

/// What ToolkitApplication::send does.
std::unique_ptr<HttpConnection> sendByToolkit(HttpRequest request, HttpConnectionDelegate& delegate,
                                              std::chrono::milliseconds stallLimit);

}  // namespace platform
