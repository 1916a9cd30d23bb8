// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The descriptors that a program waits on whose main loop is the toolkit's.

#pragma once

#include <memory>

#include "platform/descriptor_set.h"

namespace platform {

/// To be made when the toolkit's application exists. Throws std::system_error when the system has
/// no descriptor left.
std::unique_ptr<DescriptorSet> makeToolkitDescriptorSet();

}  // namespace platform
