// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/byte_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/descriptors.h"
#include "support/limit.h"

namespace platform {
namespace {

TEST(ByteBuffer, BeginsEmpty) {
  ByteBuffer buffer;
  EXPECT_TRUE(buffer.view().empty());
  buffer.append("");
  EXPECT_TRUE(buffer.view().empty());
  buffer.seal();
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
  for (const std::size_t pieceSize : {97UL, 65'536UL, 3'000'000UL}) {
    for (const std::size_t size : {50'000UL, 1'048'576UL, 1'048'577UL, 20'000'000UL}) {
      const std::string expected = numbered(size);
      ByteBuffer buffer;
      appendInPieces(buffer, expected, pieceSize);
      // Not EXPECT_EQ, which would print all of it.
      EXPECT_TRUE(buffer.view() == expected) << pieceSize << ' ' << size;
      buffer.seal();
      EXPECT_TRUE(buffer.view() == expected) << pieceSize << ' ' << size;
    }
  }
}

TEST(ByteBuffer, HoldsNoDescriptorOnceSealed) {
  const std::size_t before = support::openDescriptors();
  ByteBuffer buffer;
  buffer.append(numbered(3'000'000));
  buffer.seal();
  EXPECT_EQ(support::openDescriptors(), before);
  EXPECT_TRUE(buffer.view() == numbered(3'000'000));
}

TEST(ByteBuffer, GivesEverythingBackWithItself) {
  const std::size_t before = support::openDescriptors();
  { ByteBuffer().append(numbered(3'000'000)); }
  EXPECT_EQ(support::openDescriptors(), before);
}

TEST(ByteBuffer, DoesWithoutDescriptors) {
  const support::Limit none(RLIMIT_NOFILE, 0);
  ByteBuffer buffer;
  appendInPieces(buffer, numbered(5'000'000), 65'536);
  EXPECT_TRUE(buffer.view() == numbered(5'000'000));
}

// What has been written to a file by then is taken along.
TEST(ByteBuffer, DoesWithoutLargeFiles) {
  const support::Limit small(RLIMIT_FSIZE, 2'500'000);
  ByteBuffer buffer;
  appendInPieces(buffer, numbered(5'000'000), 65'536);
  EXPECT_TRUE(buffer.view() == numbered(5'000'000));
}

}  // namespace
}  // namespace platform
