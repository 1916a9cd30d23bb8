// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop/qt_desktop.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QStringDecoder>
#include <QUrl>

#include "platform/desktop/qt_url.h"
#include "platform/desktop/text_editor.h"

namespace platform {

void QtDesktop::copyToClipboard(const std::string& text) {
  QClipboard* clipboard = QGuiApplication::clipboard();
  clipboard->clear();
  // Every byte counts: without this flag, a byte order mark would be dropped.
  QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
  clipboard->setText(decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size()))));
}

void QtDesktop::openUrl(const std::string& url) {
  const QUrl parsed = urlFromText(QString::fromStdString(url));
  if (parsed.isValid() && !parsed.isEmpty()) {
    QDesktopServices::openUrl(parsed);
  }
}

void QtDesktop::openInTextEditor(const std::string& path) {
  const Command editor = textEditorCommand(path);
  QStringList arguments;
  for (const std::string& argument : editor.args) {
    arguments << QFile::decodeName(argument.c_str());
  }
  QProcess::startDetached(QFile::decodeName(editor.path.c_str()), arguments);
}

}  // namespace platform
