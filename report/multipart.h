// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The request of the upload.

#pragma once

#include <string>
#include <string_view>

#include "platform/http/http_connection.h"

namespace report {

/// A request that sends form data to `url`: one part, a file named "test.bin" in the field "file",
/// that holds `data` unchanged.
platform::HttpRequest postRequestWithURL(const std::string& url, std::string_view boundry,
                                         std::string_view data);

}  // namespace report
