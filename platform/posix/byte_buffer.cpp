// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/byte_buffer.h"

#include "platform/heap_bytes.h"

namespace platform {

class ByteBuffer::Storage {
 public:
  HeapBytes heap;
};

ByteBuffer::ByteBuffer() : storage(std::make_unique<Storage>()) {}

ByteBuffer::~ByteBuffer() = default;

void ByteBuffer::append(std::string_view more) {
  storage->heap.append(more);
  contents = storage->heap.view();
}

void ByteBuffer::seal() {
  // The heap keeps nothing for appending but address space.
}

}  // namespace platform
