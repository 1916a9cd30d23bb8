// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Standard output, which scripts read, and the writing of bytes to a descriptor.

#pragma once

#include <system_error>

#include "text/utf8.h"

namespace text {

/// Writes all of `bytes` to standard output, unbuffered, and returns the error. A reader that has
/// gone away is none: it has seen what it wanted, and the rest of the delivery goes on.
std::error_code writeStandardOutput(const Buffers& bytes);

/// Writes all of `bytes` to `fd`, waiting where it has to; returns 0 or the error number.
int writeAll(int fd, const Buffers& bytes);

}  // namespace text
