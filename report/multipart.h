// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The body of the upload.

#pragma once

#include <string>
#include <string_view>

namespace report {

/// The media type of multipart form data with the given boundary.
std::string multipartContentType(std::string_view boundary);

/// Form data with one part, a file named "test.bin" in the field "file", that holds `data`
/// unchanged.
std::string multipartBody(std::string_view boundary, std::string_view data);

}  // namespace report
