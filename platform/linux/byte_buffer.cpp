// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/byte_buffer.h"

#include <cstddef>
#include <optional>

#include "platform/heap_bytes.h"
#include "platform/linux/memory_file.h"

namespace platform {

namespace {

// A file in memory takes a descriptor, and a page even for a single byte.
constexpr std::size_t heapBytesMax = 1UL << 20;

}  // namespace

class ByteBuffer::Storage {
 public:
  std::string_view append(std::string_view more) {
    if (!file && mayUseFile && heap.view().size() + more.size() > heapBytesMax) {
      moveToFile();
    }
    if (file && !file->append(more)) {
      moveToHeap();
    }
    if (file) {
      return file->view();
    }
    heap.append(more);
    return heap.view();
  }

  void seal() {
    if (file) {
      file->seal();
    }
  }

 private:
  void moveToFile() {
    file.emplace();
    if (file->append(heap.view())) {
      heap.clear();
    } else {
      file.reset();
      mayUseFile = false;
    }
  }

  void moveToHeap() {
    heap.append(file->view());
    file.reset();
    mayUseFile = false;
  }

  HeapBytes heap;
  std::optional<MemoryFile> file;
  bool mayUseFile = true;
};

ByteBuffer::ByteBuffer() : storage(std::make_unique<Storage>()) {}

ByteBuffer::~ByteBuffer() = default;

void ByteBuffer::append(std::string_view more) {
  contents = storage->append(more);
}

void ByteBuffer::seal() {
  storage->seal();
}

}  // namespace platform
