// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The lightest application that can turn the main loop of a run.

#pragma once

#include <memory>

#include "platform/application.h"

namespace platform {

/// An application for a run that neither shows a window nor sends anything: its send() throws
/// std::logic_error where a lighter main loop than the toolkit's is to be had. `argc` and `argv`
/// must outlive it. Refuses to work with the rights of another user than the one who started it.
std::unique_ptr<Application> makeHeadlessApplication(int& argc, char** argv);

}  // namespace platform
