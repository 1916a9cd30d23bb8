// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A file without a name that lives in memory. Main thread only.

#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// Bytes that are appended by writing and seen through a mapping. For a long text this costs a
/// fraction of what memory of the process does: the system clears each page of that before it hands
/// it out and takes a fault for it, while a page of a file is first filled by the write that makes
/// it. Not copyable.
class MemoryFile {
 public:
  /// An empty file. Where the system refuses one, nothing can be appended.
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// Valid until the next append.
  std::string_view view() const { return {mapping, size}; }

  /// False when the system refuses, be it for lack of descriptors, of memory or of file size; the
  /// bytes appended before stay.
  bool append(std::string_view more);

  /// Closes the descriptor; nothing can be appended any more.
  void seal();

 private:
  bool map(std::size_t needed);

  int descriptor;
  char* mapping = nullptr;
  std::size_t mappedBytes = 0;
  std::size_t size = 0;
};

}  // namespace platform
