// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The application with the toolkit's main loop.

#pragma once

#include "platform/application.h"

class QCoreApplication;

namespace platform {

/// Stands where the toolkit starts a thread and does not look whether it got one, to wait for it
/// for ever or to crash: while this lives, a thread that the system refuses is an uncaught error.
class VitalThread {
 public:
  VitalThread();
  ~VitalThread();
  VitalThread(const VitalThread&) = delete;
  VitalThread& operator=(const VitalThread&) = delete;
};

/// An application that can do all but show windows: no display is needed, looked for or shown on.
class ToolkitApplication : public Application {
 public:
  /// `argc` and `argv` must outlive it. Qt gets the program's name only: `argc` is set to 1.
  ToolkitApplication(int& argc, char** argv);
  ~ToolkitApplication() override;

  int run() override;
  void turn() override;
  void post(std::function<void()> task) override;
  DescriptorSet& descriptors() override;
  std::unique_ptr<HttpConnection> send(HttpRequest request, HttpConnectionDelegate& delegate,
                                       std::chrono::milliseconds stallLimit) override;

 protected:
  /// With what `makeToolkit` makes as the toolkit's own application.
  explicit ToolkitApplication(
      const std::function<std::unique_ptr<QCoreApplication>()>& makeToolkit);

  /// Watches no descriptor any more, for good.
  void stopWatching() { watched.reset(); }

 private:
  std::unique_ptr<QCoreApplication> toolkit;
  std::unique_ptr<DescriptorSet> watched;
};

}  // namespace platform
