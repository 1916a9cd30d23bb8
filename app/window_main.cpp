// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The program with its window.

#include "app/windowed_run.h"

int main(int argc, char** argv) {
  return app::runProgram(argc, argv, app::makeMainController, app::runWindowed);
}
