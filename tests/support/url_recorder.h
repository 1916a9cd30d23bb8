// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the program asks the desktop to open, recorded instead of opened.

#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace support {

class UrlRecorder : public QObject {
  Q_OBJECT

 public:
  UrlRecorder() {
    for (const char* scheme : schemes) {
      QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "record");
    }
  }
  ~UrlRecorder() override {
    for (const char* scheme : schemes) {
      QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    }
  }

  QStringList opened;

 public slots:
  void record(const QUrl& url) { opened << url.toString(QUrl::FullyEncoded); }

 private:
  static constexpr const char* schemes[] = {"http", "https", "file", "javascript"};
};

}  // namespace support
