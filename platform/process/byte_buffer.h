// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a command has written so far. Used by the main thread only.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string_view>

namespace platform {

/// A growable run of contiguous bytes, not copyable, which costs about its own size of memory: a
/// long one doubles by realloc, which can move its pages without copying them.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  ~ByteBuffer() { std::free(bytes); }
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer& operator=(const ByteBuffer&) = delete;

  /// The bytes appended so far; valid until the next append.
  std::string_view view() const { return {bytes, size}; }

  /// Appends a copy of `more`. Throws std::bad_alloc when there is no memory for it.
  void append(std::string_view more) {
    if (more.size() > capacity - size) {
      grow(size + more.size());
    }
    std::copy(more.begin(), more.end(), bytes + size);
    size += more.size();
  }

 private:
  void grow(std::size_t needed) {
    const std::size_t wanted = size == 0 ? needed : std::max(needed, capacity * 2);
    void* moved = std::realloc(bytes, wanted);
    if (moved == nullptr) {
      throw std::bad_alloc();
    }
    bytes = static_cast<char*>(moved);
    capacity = wanted;
  }

  char* bytes = nullptr;
  std::size_t size = 0;
  std::size_t capacity = 0;
};

}  // namespace platform
