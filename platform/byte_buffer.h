// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a command has written so far. Used by the main thread only.

#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace platform {

/// A growable run of bytes, kept once and in one piece. Growing moves pages instead of copying
/// bytes where the system can, so that a buffer of B bytes costs about B bytes of memory at any
/// moment. Not copyable.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  ~ByteBuffer();
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer& operator=(const ByteBuffer&) = delete;

  /// The bytes appended so far; valid until the next append.
  std::string_view view() const { return {bytes, size}; }

  /// Room behind the last byte that a read may fill, of any size from 0 bytes up; what was filled
  /// is then committed.
  std::span<char> spare() { return {bytes + size, capacity - size}; }

  /// Makes the first `count` bytes of the spare room part of the buffer.
  void commit(std::size_t count) { size += count; }

  /// Appends a copy of `more`. Throws std::bad_alloc when there is no memory for it.
  void append(std::string_view more);

 private:
  void grow(std::size_t needed);

  char* bytes = nullptr;
  std::size_t size = 0;
  std::size_t capacity = 0;
};

}  // namespace platform
