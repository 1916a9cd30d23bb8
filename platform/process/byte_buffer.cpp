// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/byte_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace platform {

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
  const std::size_t wanted = size == 0 ? needed : std::max(needed, capacity * 2);
  void* moved = std::realloc(bytes, wanted);
  if (moved == nullptr) {
    throw std::bad_alloc();
  }
  bytes = static_cast<char*>(moved);
  capacity = wanted;
}

}  // namespace platform
