// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// State and set-up of the controller.

#include "app/main_controller.h"

#include <utility>

#include "platform/event_loop/fatal_error.h"
#include "platform/files/files.h"

namespace app {

MainController::MainController(platform::EventLoop& eventLoop, diagnostics::Endpoints asked)
    : loop(eventLoop), endpoints(std::move(asked)) {
  platform::onFatalError().saveReport = [this] {
    if (isReportAtRisk) {
      saveToDesktop();
    }
  };
  platform::onFatalError().endCommands = [this] {
    for (const auto& process : processes) {
      process->terminate();
    }
  };
}

MainController::~MainController() {
  platform::onFatalError().saveReport = nullptr;
  platform::onFatalError().endCommands = nullptr;
}

void MainController::initArgsWithSilent(bool silent, bool console, bool forceSKV, bool skipSKV,
                                        bool internet) {
  isSilent = silent;
  isConsole = console;
  forceSkv = forceSKV;
  skipSkv = skipSKV;
  isInternet = internet;
}

void MainController::setOutputFile(const std::string& path) {
  outputFile = platform::expandTilde(path);
}

void MainController::awakeFromNib() {
  processes = diagnostics::ProcessList();
  container.clear();
  textResultsLinkView.send(&ui::ScrollView::setHidden, true);
  textCopyPaste.send(&ui::Label::setHidden, true);
  copyToClipBoardLink.send(&ui::Button::setHidden, true);
  shareButton.send(&ui::Button::setHidden, true);
  window.send(&ui::Window::setTitle, "Halvik Diagnostic v" HALVIK_VERSION);
  tailSize = 15'000;
  maxPostSize = 1'000'000;
}

}  // namespace app
