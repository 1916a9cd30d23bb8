// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The program that users call, with the libraries of a run that prints its report or writes it to a
// file.

#include "app/companions.h"
#include "platform/headless_application.h"

namespace {

std::unique_ptr<platform::Application> makeApplication(int& argc, char** argv, bool willUpload) {
  if (willUpload) {
    app::becomeUploader(argv);
  }
  return platform::makeHeadlessApplication(argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
  return app::runProgram(argc, argv, app::makeMainController,
                         {.makeApplication = makeApplication, .runWindowed = app::becomeWindow});
}
