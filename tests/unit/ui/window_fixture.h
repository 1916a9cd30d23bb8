// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A real window on an off-screen display, its controller, a home folder and a server to upload to.

#pragma once

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "app/windowed_run.h"
#include "support/desktop_recorder.h"
#include "support/environment.h"
#include "support/event_loop.h"
#include "support/http_server.h"
#include "support/temporary_folder.h"

namespace ui {

/// Runs one shell command line in place of each test of the plan.
class ShellController final : public app::MainController {
 public:
  explicit ShellController(const std::string& submitUrl)
      : MainController(support::eventLoop(), endpointsAt(submitUrl)) {}

  using MainController::startTest;
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const Text& comment) override {
    planned.push_back(launchPath);
    domainArgument = args.empty() ? "" : args.back();
    MainController::startTest("/bin/sh", {"-c", line}, comment);
  }

  std::string line = ":";
  std::vector<std::string> planned;
  std::string domainArgument;

 private:
  static diagnostics::Endpoints endpointsAt(const std::string& url) {
    diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
    endpoints.submitUrl = url;
    return endpoints;
  }
};

class WindowTest : public testing::Test {
 protected:
  /// Opens the window; the n-th upload meets the n-th behaviour.
  void open(const std::vector<support::HttpServer::Behaviour>& behaviours) {
    server = std::make_unique<support::HttpServer>(behaviours);
    auto owned = std::make_unique<ShellController>(server->url());
    controller = owned.get();
    run = std::make_unique<app::WindowedRun>(std::move(owned), desktop);
    run->window.show();
    window = QApplication::topLevelWidgets().first();
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->objectName() == QLatin1String("window")) {
        window = widget;
      }
    }
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
  }

  template <class Widget = QWidget>
  Widget* find(const char* name) const {
    auto* found = window->findChild<Widget*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }

  QTextBrowser* results() const { return find<QTextBrowser>("results"); }

  std::string shownText() const { return results()->toPlainText().toStdString(); }

  void type(const char* field, const QString& text) const { QTest::keyClicks(find(field), text); }

  void pressStart() const { QTest::mouseClick(find("start"), Qt::LeftButton); }

  /// Waits for the end of the run that goes on: the start button is there again.
  void finish() const {
    support::turnUntil([&] { return find("start")->isEnabled(); });
  }

  void runOnce() const {
    pressStart();
    finish();
  }

  support::TemporaryFolder home;
  support::ScopedVariable homeVariable{"HOME", home.path().c_str()};
  support::ScopedVariable configVariable{"XDG_CONFIG_HOME", nullptr};
  support::DesktopRecorder desktop;
  std::unique_ptr<support::HttpServer> server;
  ShellController* controller = nullptr;
  std::unique_ptr<app::WindowedRun> run;
  QWidget* window = nullptr;
};

}  // namespace ui
