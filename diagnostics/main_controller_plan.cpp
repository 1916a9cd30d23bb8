// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The plan of a run, launched, with a command for each of the Skivra's beacon logs.

#include <memory>

#include "app/main_controller.h"
#include "diagnostics/plan.h"
#include "platform/files/files.h"
#include "platform/http/http_connection.h"
#include "text/notification_center.h"

namespace app {

void MainController::runTests() {
  startTests();
}

void MainController::startTests() {
  isSkv = platform::pathExists(diagnostics::skivraFolder);
  isFinishing = false;
  rememberAccountAndTicketNo();
  const diagnostics::TestDomain testDomain =
      diagnostics::makeTestDomain(domain, textDomainToTest.ask(&ui::TextField::stringValue));
  disableUI();
  container.push_back(processes);
  processes = diagnostics::ProcessList();
  diagnostics::startGeneralTests(*this, endpoints, testDomain);
  if (!skipSkv && (isSkv || forceSkv)) {
    diagnostics::startSkivraTests(*this, endpoints, testDomain);
    tailBeaconLogs();
    diagnostics::startSystemLogAndBlockingTests(*this, endpoints, tailSize);
  }
  progressIndicator.send(&ui::ProgressBar::setRange, 0, static_cast<int>(processes.size()));
  progressIndicator.send(&ui::ProgressBar::setValue, 0);
  if (!isSilent) {
    showProgress();
  }
  startProgressLine();
  if (willUpload()) {
    loop.post([] { platform::loadHttpModule(); });
  }
}

void MainController::startTest(const std::string& launchPath, const std::vector<std::string>& args,
                               const Text& comment) {
  const auto process = std::make_shared<diagnostics::Process>(loop);
  text::NotificationCenter::defaultCenter().addObserver(
      diagnostics::ProcessTerminatedNotification, process.get(),
      [this] { processTerminatedNotification(); });
  processes.append(process);
  process->start(launchPath, args, comment);
}

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
