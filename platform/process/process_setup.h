// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the program sets for itself, once, before it starts its first command.

#pragma once

namespace platform {

/// Prepares this process for running many commands at once:
/// - the descriptors 0, 1 and 2 are open, so that no pipe of ours gets one of these numbers;
/// - the soft limit on open descriptors is raised to the hard one where the system allows it, since
///   each running command takes three;
/// - a write to a closed pipe or beyond a quota returns an error instead of ending the program;
/// - SIGCHLD is not ignored, whatever the program was started with, so that exited commands can be
///   reaped;
/// - a termination signal ends the commands as well;
/// - an exception that nothing catches is a fatal error.
void setUpProcess();

/// Throws std::runtime_error if the executable is setuid: the owner's rights would go to whatever
/// stands in PATH, and to a file of any name.
void refuseSetuid();

/// Sets the soft limit on open descriptors that the program was started with, which is what a
/// command is to inherit: old programs close every possible descriptor one by one. May be called in
/// a child process before it becomes the command: it is async-signal-safe.
void restoreStartingDescriptorLimit();

}  // namespace platform
