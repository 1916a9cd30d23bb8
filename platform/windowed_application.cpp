// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/windowed_application.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QSemaphore>
#include <QStringDecoder>
#include <QThreadPool>
#include <QUrl>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>

#include "platform/boundary.h"
#include "platform/log.h"
#include "platform/qt_url.h"
#include "platform/text_editor.h"

namespace platform {

namespace {

// Longer than the toolkit waits for a clipboard manager to take over what was copied.
constexpr unsigned farewellSecondsMax = 10;

class ToolkitDesktop final : public Desktop {
 public:
  void copyToClipboard(const std::string& text) override {
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    // Every byte counts: what would otherwise be taken for a mark of the encoding as well.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    clipboard->setText(decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size()))));
  }

  void openUrl(const std::string& url) override {
    const QUrl parsed = urlFromText(QString::fromStdString(url));
    if (parsed.isValid() && !parsed.isEmpty()) {
      QDesktopServices::openUrl(parsed);
    }
  }

  void openInTextEditor(const std::string& path) override {
    const Command editor = textEditorCommand(path);
    QStringList arguments;
    for (const std::string& argument : editor.args) {
      arguments << QFile::decodeName(argument.c_str());
    }
    QProcess::startDetached(QFile::decodeName(editor.path.c_str()), arguments);
  }
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

// Where the display can, it passes the toolkit a descriptor for the picture of a window, and for a
// larger one again. The toolkit waits for ever for one that finds no number, because the commands
// have taken all. Commands are to find their environment as it was.
class WithoutSharedPictures {
 public:
  WithoutSharedPictures() {
    if (!wasSet) {
      qputenv(setting, "1");
    }
  }
  ~WithoutSharedPictures() {
    if (!wasSet) {
      qunsetenv(setting);
    }
  }
  WithoutSharedPictures(const WithoutSharedPictures&) = delete;
  WithoutSharedPictures& operator=(const WithoutSharedPictures&) = delete;

 private:
  static constexpr const char* setting = "QT_XCB_NO_MITSHM";

  bool wasSet = qEnvironmentVariableIsSet(setting);
};

std::unique_ptr<QCoreApplication> makeWindowedToolkit(int& argc, char** argv) {
  lastMeasures().tellUser = [](const char* /*reason*/) {
    log("the window cannot be opened; the option -s runs without one");
  };
  const VitalThread thread;
  const WithoutSharedPictures setting;
  argc = std::min(argc, 1);
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
  lastMeasures().tellUser = [this](const char* reason) {
    // Nobody reads from the commands any more: what they print would keep the message box busy.
    stopWatching();
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
