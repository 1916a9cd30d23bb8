// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the program sets for itself, once, before it starts its first command.

#pragma once

namespace platform {

/// Prepares this process for running many commands at once and for outliving the readers of its
/// output:
/// - every one of the descriptors 0, 1 and 2 is open, so that no pipe of ours can take its number;
/// - the soft limit on open descriptors is raised to the hard one, since each running command takes
///   up to three;
/// - a closed pipe or a full quota comes back as an error of the write instead of ending the
/// program;
/// - ended commands wait until they are collected, whatever the program was started with;
/// - a signal that ends the program ends its commands as well;
/// - an error that nothing has caught does not end it without a word.
/// A limit that cannot be raised is left as it is.
void setUpProcess();

/// Sets the soft limit on open descriptors that the program was started with, which is what a
/// command is to inherit: old programs close every possible descriptor one by one. May be called in
/// a child process before it becomes the command: it is async-signal-safe.
void restoreStartingDescriptorLimit();

}  // namespace platform
