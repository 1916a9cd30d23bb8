// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A system that is in trouble, as far as one kind of call is concerned.

#pragma once

#include <seccomp.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace support {

/// Lets every later call with this number fail with `problem`, but for those with `spared` as their
/// first argument. For good, and for all that the process starts: for death tests only. Returns
/// whether the system permits that.
inline bool refuseCall(long number, int problem, std::optional<int> spared = std::nullopt) {
  const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ALLOW),
                                                                 &seccomp_release);
  const std::uint32_t refusal = SCMP_ACT_ERRNO(static_cast<unsigned>(problem));
  const std::array condition{scmp_arg_cmp{.arg = 0,
                                          .op = SCMP_CMP_NE,
                                          .datum_a = static_cast<scmp_datum_t>(spared.value_or(0)),
                                          .datum_b = 0}};
  return seccomp_rule_add_array(filter.get(), refusal, static_cast<int>(number), spared ? 1 : 0,
                                condition.data()) == 0 &&
         seccomp_load(filter.get()) == 0;
}

}  // namespace support
