// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The one way from a text to the address that is opened, for links and for buttons.

#pragma once

#include <QUrl>

namespace platform {

/// The address that stands in `text`, without white space around it. What no address may hold, such
/// as "|", is percent-encoded; what is encoded stays so. Not valid when `text` is no address.
inline QUrl urlFromText(const QString& text) {
  return {text.trimmed(), QUrl::TolerantMode};
}

}  // namespace platform
