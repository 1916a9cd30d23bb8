// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The fixed plan of diagnostic commands: what is run, with which arguments, in which order.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "diagnostics/command_starter.h"
#include "diagnostics/endpoints.h"

namespace diagnostics {

/// The domain that the user wants tested, used verbatim as an argument; absent when nobody could
/// name one.
using TestDomain = std::optional<std::string>;

/// Where the Skivra keeps its files; no trailing "/".
inline constexpr const char* skivraFolder = "/Library/Application Support/Halvik Skivra";

/// The domain to test: `option` unless it is absent or empty, else `field`, without its blanks
/// (U+0020).
TestDomain makeTestDomain(const std::optional<std::string>& option,
                          const std::optional<std::string>& field);

/// Starts the tests that every run makes, with those of `domain` if it is one that can be asked
/// for.
void startGeneralTests(CommandStarter& starter, const Endpoints& endpoints,
                       const TestDomain& domain);

/// Starts the tests of the Skivra that stand before its beacon logs.
void startSkivraTests(CommandStarter& starter, const Endpoints& endpoints,
                      const TestDomain& domain);

/// Starts the tests of the Skivra that stand after its beacon logs; `tailSize` lines of the system
/// log are searched.
void startSystemLogAndBlockingTests(CommandStarter& starter, const Endpoints& endpoints,
                                    std::int32_t tailSize);

}  // namespace diagnostics
