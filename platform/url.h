// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Addresses of the web as texts.

#pragma once

#include <string>

namespace platform {

/// The host of `url`, as it stands there; empty when it has none.
std::string hostOfUrl(const std::string& url);

}  // namespace platform
