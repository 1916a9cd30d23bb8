// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

// Address space, not memory, which is taken by what is written only.
constexpr std::size_t mappedBytesMin = 4UL << 20;

}  // namespace

MemoryFile::MemoryFile() : descriptor(memfd_create("halvik-output", MFD_CLOEXEC)) {}

MemoryFile::~MemoryFile() {
  seal();
  if (mapping != nullptr) {
    munmap(mapping, mappedBytes);
  }
}

bool MemoryFile::append(std::string_view more) {
  if (!map(size + more.size())) {
    return false;
  }
  for (std::size_t written = 0; written < more.size();) {
    const ssize_t count = pwrite(descriptor, more.data() + written, more.size() - written,
                                 static_cast<off_t>(size + written));
    if (count <= 0) {
      return false;
    }
    written += static_cast<std::size_t>(count);
  }
  size += more.size();
  return true;
}

void MemoryFile::seal() {
  if (descriptor >= 0) {
    close(std::exchange(descriptor, -1));
  }
}

bool MemoryFile::map(std::size_t needed) {
  if (needed <= mappedBytes) {
    return true;
  }
  const std::size_t wanted = std::max({needed, mappedBytes * 2, mappedBytesMin});
  void* moved = mapping == nullptr ? mmap(nullptr, wanted, PROT_READ, MAP_SHARED, descriptor, 0)
                                   : mremap(mapping, mappedBytes, wanted, MREMAP_MAYMOVE);
  if (moved == MAP_FAILED) {
    return false;
  }
  mapping = static_cast<char*>(moved);
  mappedBytes = wanted;
  return true;
}

}  // namespace platform
