// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/application.h"

#include <QCoreApplication>

#include <cstdlib>
#include <utility>

#include "platform/boundary.h"
#include "platform/log.h"

namespace platform {

namespace {

// The toolkit's own remarks go where ours go. Its fatal ones come when it finds no display: an
// abort would look like a defect of the program, and its advice to reinstall would help nobody.
void logToolkitMessage(QtMsgType type, const QMessageLogContext& /*context*/,
                       const QString& message) {
  const bool isAboutLocale = message.startsWith(QLatin1String("Detected locale"));
  if (type == QtDebugMsg || type == QtInfoMsg || isAboutLocale) {
    return;
  }
  const bool isAboutDisplay = message.startsWith(QLatin1String("This application failed to start"));
  log(isAboutDisplay ? "there is no display to open the window on; the option -s runs without one"
                     : message.toStdString());
  if (type == QtFatalMsg) {
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace

class Application::Parts {
 public:
  explicit Parts(std::unique_ptr<QCoreApplication> made) : toolkit(std::move(made)) {}

  std::unique_ptr<QCoreApplication> toolkit;
  DescriptorSet descriptors;
};

Application::Application(int& argc, char** argv)
    : Application([&argc, argv] { return std::make_unique<QCoreApplication>(argc, argv); }) {}

Application::Application(const std::function<std::unique_ptr<QCoreApplication>()>& makeToolkit) {
  qInstallMessageHandler(logToolkitMessage);
  parts = std::make_unique<Parts>(makeToolkit());
}

Application::~Application() = default;

void Application::setDelegate(ApplicationDelegate& /*delegate*/) {}

int Application::run() {
  return QCoreApplication::exec();
}

void Application::turn() {
  QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void Application::post(std::function<void()> task) {
  QMetaObject::invokeMethod(
      parts->toolkit.get(), [task = std::move(task)] { enter(task); }, Qt::QueuedConnection);
}

void Application::exit(int status) {
  // Not std::exit: threads that look up names may still be at work, and nothing of ours waits to be
  // written.
  std::_Exit(status);
}

DescriptorSet& Application::descriptors() {
  return parts->descriptors;
}

}  // namespace platform
