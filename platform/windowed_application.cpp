// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/windowed_application.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QMessageBox>
#include <QSemaphore>
#include <QThreadPool>
#include <QUrl>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

#include "platform/boundary.h"

namespace platform {

namespace {

// Longer than the toolkit waits for a clipboard manager to take over what was copied.
constexpr unsigned farewellSecondsMax = 10;

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

// For a message box that tells of commands which have taken all descriptors: the display passes it
// some, and the toolkit waits for ever for one that did not come through.
class SpareDescriptors {
 public:
  SpareDescriptors() {
    for (int& fd : held) {
      fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
  }

  void release() const {
    for (const int fd : held) {
      close(fd);
    }
  }

 private:
  std::array<int, 8> held{};
};

void showError(const char* reason) {
  QMessageBox::critical(nullptr, QStringLiteral("Halvik Diagnostic"),
                        QStringLiteral("Halvik Diagnostic has to end because of an error:\n\n%1")
                            .arg(QString::fromUtf8(reason)));
}

// The toolkit paints with threads, started in the middle of it, and would wait for ever for one
// that the system refuses: commands may have used up all that it grants. The one started here
// stays.
void keepThreadToPaintWith() {
  QThreadPool* pool = QThreadPool::globalInstance();
  pool->setMaxThreadCount(1);
  pool->setExpiryTimeout(-1);
  QSemaphore isRunning;
  pool->start([&isRunning] { isRunning.release(); });
  isRunning.acquire();
}

std::unique_ptr<QCoreApplication> makeWindowedToolkit(int& argc, char** argv) {
  auto toolkit = std::make_unique<QApplication>(argc, argv);
  keepThreadToPaintWith();
  return toolkit;
}

extern "C" void endAtLast(int /*signal*/) {
  std::_Exit(EXIT_SUCCESS);
}

// The toolkit takes leave of the display and of its own threads, and waits for an answer without a
// limit. The window has gone by then: nobody would see that the process hangs, and end it.
void limitFarewell() {
  sigset_t alarmSignal;
  sigemptyset(&alarmSignal);
  sigaddset(&alarmSignal, SIGALRM);
  pthread_sigmask(SIG_UNBLOCK, &alarmSignal, nullptr);
  std::signal(SIGALRM, endAtLast);
  alarm(farewellSecondsMax);
}

}  // namespace

WindowedApplication::WindowedApplication(int& argc, char** argv)
    : ToolkitApplication([&argc, argv] { return makeWindowedToolkit(argc, argv); }),
      ownDesktop(std::make_unique<ToolkitDesktop>()) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName(QStringLiteral("halvik-diagnostic"));
  lastMeasures().tellUser = [this, spare = SpareDescriptors()](const char* reason) {
    // Nobody reads from the commands any more: what they print would keep the message box busy.
    stopWatching();
    spare.release();
    showError(reason);
  };
}

WindowedApplication::~WindowedApplication() = default;

int WindowedApplication::run() {
  const int status = ToolkitApplication::run();
  limitFarewell();
  return status;
}

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
