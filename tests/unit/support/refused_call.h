// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A system that is in trouble, as far as one kind of call is concerned.

#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace support {

/// Lets every later call with this number fail with `problem`, but for those with `spared` as their
/// first argument. For good, and for all that the process starts: for death tests only. Returns
/// whether the system permits that.
inline bool refuseCall(long number, int problem, std::optional<int> spared = std::nullopt) {
  constexpr auto load = static_cast<std::uint16_t>(BPF_LD | BPF_W | BPF_ABS);
  constexpr auto equal = static_cast<std::uint16_t>(BPF_JMP | BPF_JEQ | BPF_K);
  constexpr auto answer = static_cast<std::uint16_t>(BPF_RET | BPF_K);
  const auto refusal = SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(problem);
  std::array<sock_filter, 6> steps{{
      {.code = load, .jt = 0, .jf = 0, .k = offsetof(seccomp_data, nr)},
      {.code = equal, .jt = 0, .jf = 2, .k = static_cast<std::uint32_t>(number)},
      {.code = load, .jt = 0, .jf = 0, .k = offsetof(seccomp_data, args)},
      {.code = equal, .jt = 0, .jf = 1, .k = static_cast<std::uint32_t>(spared.value_or(-1))},
      {.code = answer, .jt = 0, .jf = 0, .k = SECCOMP_RET_ALLOW},
      {.code = answer, .jt = 0, .jf = 0, .k = refusal},
  }};
  sock_fprog program{.len = steps.size(), .filter = steps.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace support
