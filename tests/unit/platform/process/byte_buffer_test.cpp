// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/byte_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <string>

namespace platform {
namespace {

TEST(ByteBuffer, BeginsEmpty) {
  ByteBuffer buffer;
  EXPECT_TRUE(buffer.view().empty());
  buffer.append("");
  EXPECT_TRUE(buffer.view().empty());
}

// Bytes that show when a piece is lost, repeated or moved.
std::string numbered(std::size_t size) {
  std::string text;
  for (std::size_t number = 0; text.size() < size; ++number) {
    text += std::to_string(number) + '\0';
  }
  text.resize(size);
  return text;
}

void appendInPieces(ByteBuffer& buffer, std::string_view text, std::size_t pieceSize) {
  for (; !text.empty(); text.remove_prefix(std::min(pieceSize, text.size()))) {
    buffer.append(text.substr(0, pieceSize));
  }
}

TEST(ByteBuffer, KeepsEveryByteInOrder) {
  const std::string expected = numbered(20'000'000);
  for (const std::size_t pieceSize : {97UL, 65'536UL, 3'000'000UL, expected.size()}) {
    ByteBuffer buffer;
    appendInPieces(buffer, expected, pieceSize);
    EXPECT_TRUE(buffer.view() == expected) << pieceSize;  // EXPECT_EQ would print all of it
  }
}

#ifndef HALVIK_SANITIZE  // ends the program itself
TEST(ByteBuffer, KeepsWhatItHasWhenThereIsNoMemoryForMore) {
  const std::string before = numbered(50'000);
  ByteBuffer buffer;
  buffer.append(before);
  // Half of all addresses.
  const std::string_view endless(before.data(), std::numeric_limits<std::ptrdiff_t>::max());
  EXPECT_THROW(buffer.append(endless), std::bad_alloc);
  EXPECT_TRUE(buffer.view() == before);
}
#endif

}  // namespace
}  // namespace platform
