// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a command has written so far. Used by the main thread only.

#pragma once

#include <memory>
#include <string_view>

namespace platform {

/// A growable run of bytes, kept once and in one piece: a buffer of B bytes costs about B bytes of
/// memory at any moment. Not copyable.
class ByteBuffer {
 public:
  ByteBuffer();
  ~ByteBuffer();
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer& operator=(const ByteBuffer&) = delete;

  /// The bytes appended so far; valid until the next append.
  std::string_view view() const { return contents; }

  /// Appends a copy of `more`. Throws std::bad_alloc when there is no memory for it.
  void append(std::string_view more);

  /// Gives back what only appending needs; nothing may be appended any more.
  void seal();

 private:
  class Storage;
  std::unique_ptr<Storage> storage;
  std::string_view contents;
};

}  // namespace platform
