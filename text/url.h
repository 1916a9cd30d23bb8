// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Web addresses (URLs) as texts.

#pragma once

#include <string>

namespace text {

/// The host of `url`, as it stands there; empty when it has none.
std::string hostOfUrl(const std::string& url);

/// Whether `url` begins with "http://" or "https://", in any case of letters, and has a host.
bool isWebUrl(const std::string& url);

}  // namespace text
