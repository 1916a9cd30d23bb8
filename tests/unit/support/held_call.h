// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A process in the middle of one system call, for as long as something else happens.

#pragma once

#include <linux/seccomp.h>
#include <seccomp.h>
#include <sys/types.h>

#include <functional>
#include <memory>
#include <thread>
#include <utility>

namespace support {

/// Holds the first call with this number that the calling thread makes from now on, or a child that
/// it starts, and calls `meanwhile` with the caller's process number, in another thread. Then this
/// call goes on, and every later one passes. For good, and for all that the process starts: for
/// processes that end with the test only. Returns whether the system permits that.
inline bool holdCall(long number, std::function<void(pid_t)> meanwhile) {
  std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ALLOW),
                                                           &seccomp_release);
  seccomp_notif* call = nullptr;
  seccomp_notif_resp* passing = nullptr;
  if (seccomp_rule_add(filter.get(), SCMP_ACT_NOTIFY, static_cast<int>(number), 0) != 0 ||
      seccomp_load(filter.get()) != 0 || seccomp_notify_alloc(&call, &passing) != 0) {
    return false;
  }
  std::thread([=, filter = std::move(filter), meanwhile = std::move(meanwhile)] {
    const int listener = seccomp_notify_fd(filter.get());
    for (bool first = true;; first = false) {
      *call = {};  // the kernel takes none but an empty one
      if (seccomp_notify_receive(listener, call) != 0) {
        continue;
      }
      if (first) {
        meanwhile(static_cast<pid_t>(call->pid));
      }
      *passing = {.id = call->id, .val = 0, .error = 0, .flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE};
      seccomp_notify_respond(listener, passing);
    }
  }).detach();
  return true;
}

}  // namespace support
