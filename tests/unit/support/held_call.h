// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A process in the middle of one system call, for as long as something else happens.

#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <utility>

namespace support {

/// Holds the first call with this number that the calling thread makes from now on, or a child that
/// it starts, and calls `meanwhile` with the caller's process number, in another thread. Then this
/// call goes on, and every later one passes. For good, and for all that the process starts: for
/// processes that end with the test only. Returns whether the system permits that.
inline bool holdCall(long number, std::function<void(pid_t)> meanwhile) {
  constexpr auto load = static_cast<std::uint16_t>(BPF_LD | BPF_W | BPF_ABS);
  constexpr auto equal = static_cast<std::uint16_t>(BPF_JMP | BPF_JEQ | BPF_K);
  constexpr auto answer = static_cast<std::uint16_t>(BPF_RET | BPF_K);
  std::array<sock_filter, 4> steps{{
      {.code = load, .jt = 0, .jf = 0, .k = offsetof(seccomp_data, nr)},
      {.code = equal, .jt = 0, .jf = 1, .k = static_cast<std::uint32_t>(number)},
      {.code = answer, .jt = 0, .jf = 0, .k = SECCOMP_RET_USER_NOTIF},
      {.code = answer, .jt = 0, .jf = 0, .k = SECCOMP_RET_ALLOW},
  }};
  sock_fprog program{.len = steps.size(), .filter = steps.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    return false;
  }
  const auto listener = static_cast<int>(
      syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
  if (listener < 0) {
    return false;
  }
  std::thread([listener, meanwhile = std::move(meanwhile)] {
    for (bool first = true;; first = false) {
      seccomp_notif call{};
      if (ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) {
        continue;
      }
      if (first) {
        meanwhile(static_cast<pid_t>(call.pid));
      }
      seccomp_notif_resp passing{
          .id = call.id, .val = 0, .error = 0, .flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE};
      ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &passing);
    }
  }).detach();
  return true;
}

}  // namespace support
