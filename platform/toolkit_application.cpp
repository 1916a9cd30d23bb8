// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/toolkit_application.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <utility>

#include "platform/boundary.h"
#include "platform/log.h"
#include "platform/toolkit_descriptor_set.h"
#include "platform/toolkit_http_connection.h"

namespace platform {

namespace {

// Read by whichever thread makes a remark.
std::atomic<bool> isThreadVital = false;

// The toolkit's own remarks go where ours go. Its fatal ones come when it finds no display: an
// abort would look like a defect of the program, and its advice to reinstall would help nobody.
// After the remark that the display has gone in the middle, it ends the process at once, with a
// report that may be complete: that is an error like any other, but that nobody is there to tell.
void logToolkitMessage(QtMsgType type, const QMessageLogContext& /*context*/,
                       const QString& message) {
  const bool isAboutLocale = message.startsWith(QLatin1String("Detected locale"));
  if (type == QtDebugMsg || type == QtInfoMsg || isAboutLocale) {
    return;
  }
  if (message.startsWith(QLatin1String("The X11 connection broke")) ||
      message.startsWith(QLatin1String("The Wayland connection"))) {
    lastMeasures().tellUser = [](const char* /*reason*/) {};
    endAfterUncaughtError(message.toUtf8().constData());
  }
  if (isThreadVital && message.startsWith(QLatin1String("QThread::start"))) {
    endAfterUncaughtError(message.toUtf8().constData());
  }
  const bool isAboutDisplay = message.startsWith(QLatin1String("This application failed to start"));
  log(isAboutDisplay ? "there is no display to open the window on; the option -s runs without one"
                     : message.toStdString());
  if (type == QtFatalMsg) {
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace

VitalThread::VitalThread() {
  isThreadVital = true;
}

VitalThread::~VitalThread() {
  isThreadVital = false;
}

ToolkitApplication::ToolkitApplication(int& argc, char** argv)
    : ToolkitApplication([&argc, argv] {
        argc = std::min(argc, 1);
        return std::make_unique<QCoreApplication>(argc, argv);
      }) {}

ToolkitApplication::ToolkitApplication(
    const std::function<std::unique_ptr<QCoreApplication>()>& makeToolkit) {
  qInstallMessageHandler(logToolkitMessage);
  toolkit = makeToolkit();
  watched = makeToolkitDescriptorSet();
}

ToolkitApplication::~ToolkitApplication() = default;

int ToolkitApplication::run() {
  return QCoreApplication::exec();
}

void ToolkitApplication::turn() {
  QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void ToolkitApplication::post(std::function<void()> task) {
  QMetaObject::invokeMethod(
      toolkit.get(), [task = std::move(task)] { enter(task); }, Qt::QueuedConnection);
}

DescriptorSet& ToolkitApplication::descriptors() {
  return *watched;
}

std::unique_ptr<HttpConnection> ToolkitApplication::send(HttpRequest request,
                                                         HttpConnectionDelegate& delegate,
                                                         std::chrono::milliseconds stallLimit) {
  return sendByToolkit(std::move(request), delegate, stallLimit);
}

}  // namespace platform
