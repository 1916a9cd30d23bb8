// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The pipes between the program and its commands. Main thread only.

#pragma once

#include <array>

namespace platform {

/// Opens a pipe, the reading end first, that no command inherits. Returns whether it could; errno
/// tells why not.
bool openPipe(std::array<int, 2>& ends);

/// Lets the writer of the pipe behind `fd` run further ahead of its reader, where the system has a
/// way to do that.
void enlargePipe(int fd);

}  // namespace platform
