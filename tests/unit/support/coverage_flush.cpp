// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Only in the build that counts branches: the linker puts these in the place of the functions that
// end a process or a program at once, without writing what has been counted.

extern "C" {
void __gcov_dump();
void __gcov_reset();
int __real_execv(const char* path, char* const argv[]);
[[noreturn]] void __real__Exit(int status);
[[noreturn]] void __real_abort();

int __wrap_execv(const char* path, char* const argv[]) {
  __gcov_dump();
  const int failed = __real_execv(path, argv);
  // If it has failed, the program goes on, and so does counting.
  __gcov_reset();
  return failed;
}

[[noreturn]] void __wrap__Exit(int status) {
  __gcov_dump();
  __real__Exit(status);
}

[[noreturn]] void __wrap_abort() {
  __gcov_dump();
  __real_abort();
}
}
