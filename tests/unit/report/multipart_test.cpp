// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/multipart.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace report {
namespace {

TEST(Multipart, WrapsTheDataInOnePart) {
  EXPECT_EQ(multipartBody("0xKhTmLbOuNdArY", "data"),
            "--0xKhTmLbOuNdArY\r\n"
            "Content-Disposition: form-data; name=\"file\"; filename=\"test.bin\"\r\n\r\n"
            "data\r\n--0xKhTmLbOuNdArY--\r\n");
  EXPECT_EQ(multipartContentType("0xKhTmLbOuNdArY"),
            "multipart/form-data; boundary=0xKhTmLbOuNdArY");
}

TEST(Multipart, AddsOneHundredAndTenBytesWhateverTheData) {
  const std::vector<std::string> bodies{"", "x", std::string("a\0b\xff", 4),
                                        std::string(1'000'000, 'x'), "--0xKhTmLbOuNdArY--\r\n"};
  for (const std::string& data : bodies) {
    const std::string body = multipartBody("0xKhTmLbOuNdArY", data);
    EXPECT_EQ(body.size(), data.size() + 110);
    EXPECT_EQ(body.substr(87, data.size()), data);
  }
}

}  // namespace
}  // namespace report
