// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QUrl>

namespace platform {

void copyToClipboard(const std::string& text) {
  QClipboard* clipboard = QGuiApplication::clipboard();
  clipboard->clear();
  clipboard->setText(QString::fromStdString(text));
}

void openUrl(const std::string& url) {
  const QUrl parsed(QString::fromStdString(url).trimmed());
  if (parsed.isValid() && !parsed.isEmpty()) {
    QDesktopServices::openUrl(parsed);
  }
}

void openInTextEditor(const std::string& path) {
  QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(path.c_str())));
}

}  // namespace platform
