// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop/qt_application.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QMessageBox>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "platform/event_loop/fatal_error.h"
#include "text/log.h"

namespace platform {

namespace {

// Longer than Qt waits for a clipboard manager to take over what was copied.
constexpr unsigned shutdownSecondsMax = 10;

enum class Phase { starting, running, ended };
std::atomic<Phase> phase = Phase::starting;  // read by Qt's threads as well

// Without a display Qt's fatal message lists the plugins that it has.
bool isWaylandPluginMissing(const QString& fatalMessage) {
  const bool isOnWayland = qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
                           qgetenv("QT_QPA_PLATFORM").startsWith("wayland");
  return isOnWayland &&
         !fatalMessage.section(QLatin1Char('\n'), 1).contains(QLatin1String("wayland"));
}

void logMissingDisplay(const QString& fatalMessage) {
  if (isWaylandPluginMissing(fatalMessage)) {
    text::log(
        "cannot open the window: Qt's plugin for Wayland is missing; install the package "
        "qt6-wayland, or use the option -s, which runs without one");
  } else {
    text::log("there is no display to open the window on; the option -s runs without one");
  }
}

// When the connection to an X server breaks, Qt calls exit(), while there may be a report to save.
void endAfterLostDisplay() {
  if (phase == Phase::running) {
    onFatalError().showError = [](const char* /*reason*/) {};
    fatalError("the connection to the display is lost");
  }
}

// When the connection to a Wayland compositor breaks, each thread of Qt that notices it logs this
// and calls _exit(). Where the desktop asks for it, newer versions of Qt connect again instead.
bool isAboutLostWayland(const QString& message) {
  return message.startsWith(QLatin1String("The Wayland connection ")) &&
         qEnvironmentVariableIntValue("QT_WAYLAND_RECONNECT") == 0;
}

void endAfterLostWayland() {
  if (phase != Phase::running) {
    return;
  }
  if (QThread::currentThread() != qApp->thread()) {
    // The main thread saves the report. This one must not end the process before that.
    QMetaObject::invokeMethod(qApp, endAfterLostDisplay, Qt::QueuedConnection);
    while (true) {
      pause();
    }
  }
  endAfterLostDisplay();
}

// Qt's messages go where ours go, but for those about how it starts. The fatal one there means that
// it found no display: an abort would look like a defect of the program, and Qt's advice to install
// it again would help nobody.
void logQtMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  const bool isStarting = phase == Phase::starting;
  if (isAboutLostWayland(message)) {
    endAfterLostWayland();
  }
  if (isStarting && type == QtFatalMsg) {
    logMissingDisplay(message);
  } else if (!isStarting && type != QtDebugMsg && type != QtInfoMsg) {
    text::log(message.toStdString());
  }
  if (type == QtFatalMsg) {
    std::_Exit(EXIT_FAILURE);
  }
}

void showErrorBox(const char* reason) {
  QMessageBox::critical(nullptr, QStringLiteral("Halvik Diagnostic"),
                        QStringLiteral("Halvik Diagnostic has to end because of an error:\n\n%1")
                            .arg(QString::fromUtf8(reason)));
}

std::unique_ptr<QApplication> makeQt(int& argc, char** argv) {
  qInstallMessageHandler(logQtMessage);
  // Qt would pass each picture of a window to the X server as a descriptor, and waits for ever when
  // the commands have used up all of them. The commands must not find the variable.
  constexpr const char* variable = "QT_XCB_NO_MITSHM";
  const bool isOurs = !qEnvironmentVariableIsSet(variable);
  if (isOurs) {
    qputenv(variable, "1");
  }
  argc = std::min(argc, 1);
  auto qt = std::make_unique<QApplication>(argc, argv);
  if (isOurs) {
    qunsetenv(variable);
  }
  return qt;
}

// Qt closes the display's connection without a time limit. No window is left then, so nobody would
// notice a process that hangs.
void limitShutdown() {
  std::signal(SIGALRM, [](int /*signal*/) { std::_Exit(EXIT_SUCCESS); });
  alarm(shutdownSecondsMax);
}

}  // namespace

// Qt's loop turns the event loop each time before it waits. libuv begins to watch a descriptor in
// its next turn only, so waiting for its own descriptor to become readable would not be enough.
class QtApplication::LoopDriver {
 public:
  explicit LoopDriver(EventLoop& eventLoop)
      : loop(eventLoop), notifier(eventLoop.descriptor(), QSocketNotifier::Read) {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     &timer, [this] { turn(); });
  }

  // Nobody reads from the commands while the message box is open: their output would keep its loop
  // busy.
  void stop() { notifier.setEnabled(false); }

 private:
  void turn() {
    if (hasFatalError()) {
      return;
    }
    loop.turnWithoutWaiting();
    const int timeoutMs = loop.timeoutMs();
    if (timeoutMs < 0) {
      timer.stop();
    } else {
      timer.start(timeoutMs);
    }
  }

  EventLoop& loop;
  // Both only end the wait.
  QSocketNotifier notifier;
  QTimer timer;
};

QtApplication::QtApplication(EventLoop& eventLoop, int& argc, char** argv)
    : qt(makeQt(argc, argv)),
      driver(std::make_unique<LoopDriver>(eventLoop)),
      ownDesktop(makeQtDesktop()) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName(QStringLiteral("halvik-diagnostic"));
  phase = Phase::running;
  std::atexit(endAfterLostDisplay);
  onFatalError().showError = [this](const char* reason) {
    driver->stop();
    showErrorBox(reason);
  };
}

QtApplication::~QtApplication() {
  onFatalError().showError = nullptr;
  phase = Phase::ended;
}

int QtApplication::run(std::function<bool()> shouldTerminate) {
  QObject::connect(qGuiApp, &QGuiApplication::lastWindowClosed, qGuiApp,
                   [shouldTerminate = std::move(shouldTerminate)] {
                     guarded([&] {
                       if (shouldTerminate()) {
                         QCoreApplication::quit();
                       }
                     });
                   });
  const int status = QCoreApplication::exec();
  phase = Phase::ended;
  limitShutdown();
  return status;
}

}  // namespace platform
