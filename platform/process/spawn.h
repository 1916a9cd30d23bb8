// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Starting a program as a child process. Main thread only.

#pragma once

namespace platform {

/// A child process, or why there is none.
struct Spawned {
  /// 0, or the error number of the step that failed.
  int error = 0;
  int pid = -1;
};

/// Starts the program file `path` with `argv`, whose last element is null, and with the two given
/// descriptors as its standard output and standard error. It inherits standard input, environment,
/// working directory and the limits that this program was started with, no other descriptor, and no
/// signal that is blocked or, but for those that staysIgnored() names, ignored.
Spawned spawn(const char* path, char* const* argv, int standardOutput, int standardError);

/// Lets the pipe that ends in `fd` hold more than usual, where the system can.
void enlargePipe(int fd);

}  // namespace platform
