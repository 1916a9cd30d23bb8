// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The desktop, with what it is to open recorded instead of opened.

#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <string>
#include <vector>

#include "support/event_loop.h"

namespace support {

class DesktopRecorder : public QObject, public platform::Desktop {
  Q_OBJECT

 public:
  DesktopRecorder() {
    for (const char* scheme : schemes) {
      QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "record");
    }
  }
  ~DesktopRecorder() override {
    for (const char* scheme : schemes) {
      QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    }
  }

  void copyToClipboard(const std::string& text) override { desktop().copyToClipboard(text); }
  void openUrl(const std::string& url) override { desktop().openUrl(url); }
  void openInTextEditor(const std::string& path) override { edited.push_back(path); }

  QStringList opened;
  std::vector<std::string> edited;

 public slots:
  void record(const QUrl& url) { opened << url.toString(QUrl::FullyEncoded); }

 private:
  static constexpr const char* schemes[] = {"http", "https", "file", "javascript"};
};

}  // namespace support
