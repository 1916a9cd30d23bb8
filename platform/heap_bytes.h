// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Bytes on the heap. Main thread only.

#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// A growable block. A short text gets just its own size; a long one doubles, with realloc and not
/// a vector, since that can move the pages of a large block without copying them. Not copyable.
class HeapBytes {
 public:
  HeapBytes() = default;
  ~HeapBytes();
  HeapBytes(const HeapBytes&) = delete;
  HeapBytes& operator=(const HeapBytes&) = delete;

  /// Valid until the next append or clear.
  std::string_view view() const { return {bytes, size}; }

  /// Throws std::bad_alloc when there is no memory.
  void append(std::string_view more);

  /// Forgets the bytes and gives their memory back.
  void clear();

 private:
  void grow(std::size_t needed);

  char* bytes = nullptr;
  std::size_t size = 0;
  std::size_t capacity = 0;
};

}  // namespace platform
