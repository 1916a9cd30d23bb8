// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The one way from a text to the address that is opened, for links and for buttons.

#pragma once

#include <QUrl>

namespace platform {

/// The address in `text`, without white space around it; not valid when there is none. What no
/// address may hold, such as "|", is percent-encoded; what is encoded stays so.
inline QUrl urlFromText(const QString& text) {
  return {text.trimmed(), QUrl::TolerantMode};
}

}  // namespace platform
