// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/desktop_setting.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "text/utf8.h"

// The desktops of Linux agree on a file that is written for the shell, with lines as
//   XDG_DESKTOP_DIR="$HOME/Desktop"

namespace platform {

namespace fs = std::filesystem;

namespace {

fs::path settingsFolder(const fs::path& home) {
  const char* named = std::getenv("XDG_CONFIG_HOME");
  return named != nullptr && *named == '/' ? fs::path(named) : home / ".config";
}

// Settings are short lines. What is none, such as a pipe without a writer or a device without an
// end, would keep a report that is to be saved waiting.
bool canBeSettings(const fs::path& path) {
  constexpr std::uintmax_t bytesMax = 1024UL * 1024;
  std::error_code failed;
  return fs::is_regular_file(path, failed) && fs::file_size(path, failed) <= bytesMax;
}

// The first word of `value`, as the shell would read it.
std::string firstWord(std::string_view value) {
  const bool isQuoted = value.starts_with('"');
  const std::string_view ends = isQuoted ? "\"" : " \t\r";
  std::string word;
  for (std::size_t i = isQuoted ? 1 : 0;
       i < value.size() && ends.find(value[i]) == std::string_view::npos; ++i) {
    if (value[i] == '\\' && i + 1 < value.size()) {
      ++i;
    }
    word += value[i];
  }
  return word;
}

fs::path folderOf(std::string_view value, const fs::path& home) {
  constexpr std::string_view variable = "$HOME";
  const std::string word = firstWord(value);
  if (!value.substr(value.starts_with('"') ? 1 : 0).starts_with(variable)) {
    return word;
  }
  const std::string_view below = std::string_view(word).substr(variable.size());
  // Not joined as paths: of these, one that begins with a second "/" would stand alone.
  return below.empty() || below.starts_with('/') ? home.string().append(below) : word;
}

}  // namespace

fs::path desktopSetting(const fs::path& home) {
  constexpr std::string_view name = "XDG_DESKTOP_DIR=";
  const fs::path path = settingsFolder(home) / "user-dirs.dirs";
  fs::path folder;
  if (!canBeSettings(path)) {
    return folder;
  }
  std::ifstream settings(path);
  for (std::string line; std::getline(settings, line);) {
    // A path ends at a NUL, wherever it is used.
    std::string_view setting = text::untilNul(line);
    setting.remove_prefix(std::min(setting.find_first_not_of(" \t"), setting.size()));
    if (setting.starts_with(name)) {
      folder = folderOf(setting.substr(name.size()), home);
    }
  }
  return folder;
}

}  // namespace platform
