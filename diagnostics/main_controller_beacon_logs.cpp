// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The Skivra's beacon logs, each read by a command of its own.

#include "app/main_controller.h"
#include "diagnostics/beacon_logs.h"
#include "platform/files/files.h"

namespace app {

void MainController::tailBeaconLogs() {
  for (const std::string& folder : diagnostics::beaconLogFolders()) {
    tailBeaconSubfolderLog(folder);
  }
}

void MainController::tailBeaconSubfolderLog(const std::string& folder) {
  for (const std::string& path :
       diagnostics::orderByCreation(folder, platform::listFolder(folder))) {
    startTest("/bin/sh", {"-c", diagnostics::readerCommandLine(path)});
  }
}

}  // namespace app
