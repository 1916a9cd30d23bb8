// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/heap_bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace platform {
namespace {

TEST(HeapBytes, KeepsEveryByteInOrder) {
  HeapBytes bytes;
  std::string expected;
  for (int i = 0; i < 2000; ++i) {
    const std::string piece(static_cast<std::size_t>(i % 97), static_cast<char>(i));
    bytes.append(piece);
    expected += piece;
  }
  EXPECT_EQ(bytes.view(), expected);
}

TEST(HeapBytes, BeginsAnewWhenCleared) {
  HeapBytes bytes;
  bytes.append("one");
  bytes.clear();
  EXPECT_TRUE(bytes.view().empty());
  bytes.append("two");
  EXPECT_EQ(bytes.view(), "two");
}

}  // namespace
}  // namespace platform
