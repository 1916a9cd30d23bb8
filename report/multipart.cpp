// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/multipart.h"

namespace report {

platform::HttpRequest postRequestWithURL(const std::string& url, std::string_view boundry,
                                         std::string_view data) {
  const std::string name(boundry);
  std::string body;
  body.reserve(data.size() + 512);
  body += "--" + name + "\r\n";
  body += "Content-Disposition: form-data; name=\"file\"; filename=\"test.bin\"\r\n\r\n";
  body += data;
  body += "\r\n--" + name + "--\r\n";
  return {
      .url = url, .contentType = "multipart/form-data; boundary=" + name, .body = std::move(body)};
}

}  // namespace report
