// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/multipart.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace report {
namespace {

TEST(Multipart, WrapsTheDataInOnePart) {
  const auto [url, contentType, body] = postRequestWithURL("https://a/", "0xKhTmLbOuNdArY", "data");
  EXPECT_EQ(url, "https://a/");
  EXPECT_EQ(body,
            "--0xKhTmLbOuNdArY\r\n"
            "Content-Disposition: form-data; name=\"file\"; filename=\"test.bin\"\r\n\r\n"
            "data\r\n--0xKhTmLbOuNdArY--\r\n");
  EXPECT_EQ(contentType, "multipart/form-data; boundary=0xKhTmLbOuNdArY");
}

TEST(Multipart, AddsOneHundredAndTenBytesWhateverTheData) {
  const std::vector<std::string> bodies{"", "x", std::string("a\0b\xff", 4),
                                        std::string(1'000'000, 'x'), "--0xKhTmLbOuNdArY--\r\n"};
  for (const std::string& data : bodies) {
    const std::string body = postRequestWithURL("", "0xKhTmLbOuNdArY", data).body;
    EXPECT_EQ(body.size(), data.size() + 110);
    EXPECT_EQ(body.substr(87, data.size()), data);
  }
}

}  // namespace
}  // namespace report
