// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/main_window.h"

#include <QWidget>

namespace ui {

class MainWindow::Parts {
 public:
  QWidget widget;
  Window window{widget};
};

MainWindow::MainWindow() : parts(std::make_unique<Parts>()) {
  parts->widget.resize(480, 320);
}

MainWindow::~MainWindow() = default;

void MainWindow::show() {
  parts->widget.show();
}

Window& MainWindow::window() {
  return parts->window;
}

}  // namespace ui
