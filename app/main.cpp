// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/entry.h"

int main(int argc, char** argv) {
  return app::runProgram(argc, argv, [](platform::Application& application) {
    return std::make_unique<app::MainController>(application);
  });
}
