// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop_setting.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

// The desktops of Linux agree on a file that is written for the shell, with lines as
//   XDG_DESKTOP_DIR="$HOME/Desktop"

namespace platform {

namespace fs = std::filesystem;

namespace {

fs::path settingsFolder(const fs::path& home) {
  const char* named = std::getenv("XDG_CONFIG_HOME");
  return named != nullptr && *named == '/' ? fs::path(named) : home / ".config";
}

// What stands between the quotes, as the shell would read it.
std::string unquote(std::string_view word) {
  std::string text;
  for (std::size_t i = 1; i < word.size() && word[i] != '"'; ++i) {
    if (word[i] == '\\' && i + 1 < word.size()) {
      ++i;
    }
    text += word[i];
  }
  return text;
}

fs::path folderOf(std::string_view word, const fs::path& home) {
  constexpr std::string_view inHome = "\"$HOME/";
  if (word == "\"$HOME\"") {
    return home;
  }
  return word.starts_with(inHome) ? home / unquote(word.substr(inHome.size() - 1))
                                  : fs::path(unquote(word));
}

}  // namespace

fs::path desktopSetting(const fs::path& home) {
  constexpr std::string_view name = "XDG_DESKTOP_DIR=";
  fs::path folder;
  std::ifstream settings(settingsFolder(home) / "user-dirs.dirs");
  for (std::string line; std::getline(settings, line);) {
    if (line.starts_with(name)) {
      folder = folderOf(std::string_view(line).substr(name.size()), home);
    }
  }
  return folder;
}

}  // namespace platform
