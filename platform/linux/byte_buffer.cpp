// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/byte_buffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace platform {

namespace {

constexpr std::size_t hugePageBytes = 2UL << 20;

// Most of what a very long output costs is the system's handing out of memory page by page. It may
// refuse larger ones.
void preferHugePages(char* bytes, std::size_t capacity) {
  if (capacity >= 4 * hugePageBytes) {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(bytes) % hugePageBytes;
    char* first = bytes + (offset == 0 ? 0 : hugePageBytes - offset);
    madvise(first, static_cast<std::size_t>(bytes + capacity - first), MADV_HUGEPAGE);
  }
}

}  // namespace

ByteBuffer::~ByteBuffer() {
  std::free(bytes);
}

void ByteBuffer::append(std::string_view more) {
  if (more.size() > capacity - size) {
    grow(size + more.size());
  }
  std::copy(more.begin(), more.end(), bytes + size);
  size += more.size();
}

void ByteBuffer::grow(std::size_t needed) {
  // A short output gets just its own size; a long one doubles, which costs address space but no
  // memory until it is written to. realloc and not a vector: it can move the pages of a large block
  // without copying them.
  const std::size_t wanted = size == 0 ? needed : std::max(needed, capacity * 2);
  void* moved = std::realloc(bytes, wanted);
  if (moved == nullptr) {
    throw std::bad_alloc();
  }
  bytes = static_cast<char*>(moved);
  capacity = wanted;
  preferHugePages(bytes, capacity);
}

}  // namespace platform
