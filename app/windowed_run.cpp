// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/windowed_run.h"

#include <utility>

#include "platform/desktop/qt_application.h"

namespace app {

WindowedRun::WindowedRun(std::unique_ptr<MainController> owned, platform::Desktop& ownDesktop)
    : window({.start = [this] { controller->runTests(); },
              .copy = [this] { controller->copyToClipBoardLinkButtonPressed(); },
              .open = [this] { controller->shareButtonPressed(); },
              .openLink = [&ownDesktop](const std::string& url) { ownDesktop.openUrl(url); }}),
      controller(std::move(owned)) {
  const ui::WindowControls controls = window.controls();
  controller->buttonStartTests.connect(controls.start);
  controller->textHalvikAccount.connect(controls.account);
  controller->textTicketNo.connect(controls.ticket);
  controller->textDomainToTest.connect(controls.domain);
  controller->progressIndicator.connect(controls.progress);
  controller->textStatus.connect(controls.status);
  controller->textCopyPaste.connect(controls.caption);
  controller->textResultsLinkView.connect(controls.resultsScroll);
  controller->textResultsLink.connect(controls.results);
  controller->window.connect(controls.window);
  controller->copyToClipBoardLink.connect(controls.copy);
  controller->shareButton.connect(controls.open);
  controller->desktop.connect(ownDesktop);
  controller->awakeFromNib();
}

int runWindowed(int& argc, char** argv, const ControllerFactory& makeController) {
  platform::EventLoop loop;
  platform::QtApplication application(loop, argc, argv);
  WindowedRun run(makeController(loop), application.desktop());
  run.show();
  return application.run(
      [&] { return run.mainController().applicationShouldTerminateAfterLastWindowClosed(); });
}

}  // namespace app
