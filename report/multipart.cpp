// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/multipart.h"

namespace report {

std::string multipartContentType(std::string_view boundary) {
  return "multipart/form-data; boundary=" + std::string(boundary);
}

std::string multipartBody(std::string_view boundary, std::string_view data) {
  std::string body;
  body.reserve(data.size() + 512);
  body.append("--").append(boundary).append("\r\n");
  body.append("Content-Disposition: form-data; name=\"file\"; filename=\"test.bin\"\r\n\r\n");
  body.append(data);
  body.append("\r\n--").append(boundary).append("--\r\n");
  return body;
}

}  // namespace report
