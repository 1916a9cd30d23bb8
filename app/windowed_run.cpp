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
  controller->buttonStartTests.connect(window.start);
  controller->textHalvikAccount.connect(window.account);
  controller->textTicketNo.connect(window.ticket);
  controller->textDomainToTest.connect(window.domain);
  controller->progressIndicator.connect(window.progress);
  controller->textStatus.connect(window.status);
  controller->textCopyPaste.connect(window.caption);
  controller->textResultsLinkView.connect(window.resultsScroll);
  controller->textResultsLink.connect(window.results);
  controller->window.connect(window.titleBar);
  controller->copyToClipBoardLink.connect(window.copyLink);
  controller->shareButton.connect(window.openLink);
  controller->desktop.connect(ownDesktop);
  controller->awakeFromNib();
}

int runWindowed(int& argc, char** argv, const ControllerFactory& makeController) {
  platform::EventLoop loop;
  platform::QtApplication application(loop, argc, argv);
  WindowedRun run(makeController(loop), application.desktop());
  run.window.show();
  return application.run(
      [&] { return run.controller->applicationShouldTerminateAfterLastWindowClosed(); });
}

}  // namespace app
