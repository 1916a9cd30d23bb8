// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/byte_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace platform {
namespace {

TEST(ByteBuffer, BeginsEmpty) {
  ByteBuffer buffer;
  EXPECT_TRUE(buffer.view().empty());
  EXPECT_TRUE(buffer.spare().empty());
  buffer.append("");
  EXPECT_TRUE(buffer.view().empty());
}

TEST(ByteBuffer, KeepsEveryByteInOrder) {
  ByteBuffer buffer;
  std::string expected;
  for (int i = 0; i < 2000; ++i) {
    const std::string piece(static_cast<std::size_t>(i % 97), static_cast<char>(i));
    buffer.append(piece);
    expected += piece;
  }
  EXPECT_EQ(buffer.view(), expected);
}

TEST(ByteBuffer, TakesBytesWrittenIntoItsSpareRoom) {
  ByteBuffer buffer;
  buffer.append("xxxxxxxxxx");
  buffer.append("one");
  ASSERT_GE(buffer.spare().size(), 2U);
  std::memcpy(buffer.spare().data(), "\0y", 2);
  buffer.commit(2);
  buffer.append("z");
  EXPECT_EQ(buffer.view(), std::string("xxxxxxxxxxone\0yz", 16));
}

TEST(ByteBuffer, GivesAShortTextNoMoreThanItsSize) {
  ByteBuffer buffer;
  buffer.append("short");
  EXPECT_TRUE(buffer.spare().empty());
}

}  // namespace
}  // namespace platform
