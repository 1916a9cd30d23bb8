// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop/qt_application.h"

#include <QImage>
#include <QPainter>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace platform {
namespace {

constexpr const char* threadFolder = "/proc/self/task";

std::set<std::string> threads() {
  std::set<std::string> ids;
  for (const auto& task : std::filesystem::directory_iterator(threadFolder)) {
    ids.insert(task.path().filename());
  }
  return ids;
}

// One that the system refused would be waited for without end.
TEST(WindowedApplication, PaintsWithoutStartingThreads) {
  if (!std::filesystem::exists(threadFolder)) {
    GTEST_SKIP() << "the system does not list the threads of a process";
  }
  const auto before = threads();
  QImage image(400, 400, QImage::Format_RGB32);
  image.fill(Qt::black);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(QGradient(QGradient::WarmFlame));
  painter.drawEllipse(image.rect());
  painter.end();
  EXPECT_NE(image.pixelColor(200, 200), Qt::black);
  EXPECT_EQ(threads(), before);
}

}  // namespace
}  // namespace platform
