// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// How the program goes on as another one that has the libraries for a run of its kind. Loading them
// takes longer than all else that a run does before its first command, so none has more than its
// run needs.

#pragma once

#include "app/entry.h"

namespace app {

/// Goes on as the program that can send a report. Ends the process with status 1 if there is none.
[[noreturn]] void becomeUploader(char* const* argv);

/// Goes on as the program that opens the window. Returns, with the exit status, only if there is
/// none.
int becomeWindow(int& argc, char** argv, const ControllerFactory& makeController);

}  // namespace app
