// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QStringDecoder>

#include "platform/desktop/desktop.h"
#include "platform/desktop/qt_url.h"
#include "platform/process/helper_executable.h"

namespace platform {

namespace {

QString fileName(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

class QtDesktop final : public Desktop {
 public:
  void copyToClipboard(const std::string& text) override {
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    // Every byte counts: without this flag, a byte order mark would be dropped.
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
    QProcess::startDetached(fileName(helperPath("open_in_text_editor")), {fileName(path)});
  }
};

}  // namespace

std::unique_ptr<Desktop> makeQtDesktop() {
  return std::make_unique<QtDesktop>();
}

}  // namespace platform
