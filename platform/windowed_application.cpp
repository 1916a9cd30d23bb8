// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/windowed_application.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QMessageBox>
#include <QUrl>

#include "platform/boundary.h"

namespace platform {

namespace {

class ToolkitDesktop final : public Desktop {
 public:
  void copyToClipboard(const std::string& text) override {
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(QString::fromStdString(text));
  }

  void openUrl(const std::string& url) override {
    const QUrl parsed(QString::fromStdString(url).trimmed());
    if (parsed.isValid() && !parsed.isEmpty()) {
      QDesktopServices::openUrl(parsed);
    }
  }

  void openInTextEditor(const std::string& path) override {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(path.c_str())));
  }
};

void showError(const char* reason) {
  QMessageBox::critical(nullptr, QStringLiteral("Halvik Diagnostic"),
                        QStringLiteral("Halvik Diagnostic has to end because of an error:\n\n%1")
                            .arg(QString::fromUtf8(reason)));
}

}  // namespace

WindowedApplication::WindowedApplication(int& argc, char** argv)
    : ToolkitApplication([&argc, argv] { return std::make_unique<QApplication>(argc, argv); }),
      ownDesktop(std::make_unique<ToolkitDesktop>()) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName(QStringLiteral("halvik-diagnostic"));
  lastMeasures().tellUser = showError;
}

WindowedApplication::~WindowedApplication() = default;

void WindowedApplication::setDelegate(ApplicationDelegate& delegate) {
  QObject::connect(qGuiApp, &QGuiApplication::lastWindowClosed, qGuiApp, [&delegate] {
    enter([&delegate] {
      if (delegate.applicationShouldTerminateAfterLastWindowClosed()) {
        QCoreApplication::quit();
      }
    });
  });
}

Desktop& WindowedApplication::desktop() {
  return *ownDesktop;
}

}  // namespace platform
