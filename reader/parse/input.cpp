// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/input.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace reader {

namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) {
      std::fclose(file);
    }
  }
};

}  // namespace

Input::Input(const std::string& path) {
  errno = 0;
  const std::unique_ptr<std::FILE, CloseFile> file(path == "-" ? stdin
                                                               : std::fopen(path.c_str(), "rb"));
  if (!file) {
    fail(path);
  }
  // Without a buffer of its own, long reads go straight to their place.
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  const std::string shownName = path == "-" ? "standard input" : path;
  constexpr std::size_t first = 65536;
  std::size_t capacity = first;
  reserve(capacity, shownName);
  while (true) {
    const std::size_t count = std::fread(bytes.get() + size, 1, capacity - size, file.get());
    size += count;
    if (count == 0) {
      break;
    }
    if (size == capacity) {
      capacity *= 2;
      reserve(capacity, shownName);
    }
  }
  if (std::ferror(file.get()) != 0) {
    fail(shownName);
  }
}

void Input::reserve(std::size_t capacity, const std::string& shownName) {
  void* memory = std::realloc(bytes.get(), capacity);
  if (memory == nullptr) {
    fail(shownName);
  }
  static_cast<void>(bytes.release());
  bytes.reset(static_cast<char*>(memory));
}

}  // namespace reader
