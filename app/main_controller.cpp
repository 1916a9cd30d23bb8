// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// State and set-up of the controller.

#include "app/main_controller.h"

#include <utility>

#include "platform/boundary.h"
#include "platform/files.h"

namespace app {

MainController::MainController(platform::Application& owner, diagnostics::Endpoints asked)
    : application(owner), endpoints(std::move(asked)) {
  platform::lastMeasures().saveReport = [this] {
    if (isReportAtRisk) {
      saveToDesktop();
    }
  };
  platform::lastMeasures().endCommands = [this] {
    for (const auto& process : processes) {
      process->terminate();
    }
  };
}

MainController::~MainController() {
  platform::lastMeasures().saveReport = nullptr;
  platform::lastMeasures().endCommands = nullptr;
}

void MainController::initArgsWithSilent(bool silent, bool console, bool forceSKV, bool skipSKV,
                                        bool internet) {
  isSilent = silent;
  isConsole = console;
  forceSkv = forceSKV;
  skipSkv = skipSKV;
  isInternet = internet;
}

void MainController::setDomain(const std::string& text) {
  domain = text;
}

void MainController::setOutputFile(const std::string& path) {
  outputFile = platform::expandTilde(path);
}

void MainController::awakeFromNib() {
  processes = diagnostics::ProcessList();
  container.clear();
  application.setDelegate(*this);
  textResultsLinkView.send(&ui::ScrollView::setHidden, true);
  textCopyPaste.send(&ui::Label::setHidden, true);
  copyToClipBoardLink.send(&ui::Button::setHidden, true);
  shareButton.send(&ui::Button::setHidden, true);
  window.send(&ui::Window::setTitle, "Halvik Diagnostic v" HALVIK_VERSION);
  tailSize = 15'000;
  maxPostSize = 1'000'000;
}

bool MainController::applicationShouldTerminateAfterLastWindowClosed() {
  return true;
}

}  // namespace app
