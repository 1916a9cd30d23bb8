// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/files.h"

#include <pwd.h>
#include <unistd.h>
#include <uv.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <optional>
#include <sstream>
#include <system_error>

#include "text/log.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

std::string homeOf(const passwd* user) {
  return user == nullptr ? "" : user->pw_dir;
}

fs::path homeFolder() {
  const char* home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? home : homeOf(getpwuid(getuid()));
}

bool isFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

// The folder that the user's settings name as the Desktop; empty when they name none. The desktops
// of Linux agree on a file that is written for the shell, with lines as
//   XDG_DESKTOP_DIR="$HOME/Desktop"
fs::path desktopSetting(const fs::path& home) {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const bool isNamed = config != nullptr && *config == '/';
  std::ifstream settings((isNamed ? fs::path(config) : home / ".config") / "user-dirs.dirs");
  constexpr std::string_view name = "XDG_DESKTOP_DIR=";
  constexpr std::string_view variable = "$HOME";
  std::string folder;
  for (std::string line; std::getline(settings >> std::ws, line);) {
    if (line.starts_with(name)) {
      std::istringstream(line.substr(name.size())) >> std::quoted(folder);
      if (folder.starts_with("$HOME/")) {
        folder.replace(0, variable.size(), home.string());
      }
    }
  }
  return folder;
}

// What the desktop environment names, unless that is no place or the home folder, its way of saying
// that there is none.
fs::path namedDesktop(const fs::path& home) {
  const fs::path folder = (desktopSetting(home) / "").lexically_normal();
  const fs::path homeItself = (home / "").lexically_normal();
  return folder.is_absolute() && folder != homeItself ? folder.parent_path() : home / "Desktop";
}

// In nanoseconds since 1970; none where nothing is at `path`.
std::optional<std::int64_t> creationTimeNs(const fs::path& path) {
  uv_fs_t request;
  if (uv_fs_lstat(nullptr, &request, path.c_str(), nullptr) < 0) {
    return std::nullopt;
  }
  const uv_stat_t& facts = request.statbuf;
  const uv_timespec_t& time = facts.st_birthtim.tv_sec != 0 ? facts.st_birthtim : facts.st_ctim;
  uv_fs_req_cleanup(&request);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

bool pathExists(const std::string& path) {
  std::error_code failed;
  const fs::file_status status = fs::status(path, failed);
  if (!fs::status_known(status)) {
    text::log("cannot tell whether " + path + " is there: " + failed.message());
  }
  return fs::exists(status);
}

std::vector<FolderEntry> listFolder(const std::string& folder) {
  std::vector<FolderEntry> entries;
  std::error_code failed;
  fs::directory_iterator entry(folder, failed);
  for (; !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
    const std::optional<std::int64_t> created = creationTimeNs(entry->path());
    if (created) {
      entries.push_back({.name = entry->path().filename().string(), .createdNs = *created});
    }
  }
  return entries;
}

std::string expandTilde(const std::string& path) {
  if (!path.starts_with('~')) {
    return path;
  }
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string user = path.substr(1, end - 1);
  const std::string home = user.empty() ? homeFolder().string() : homeOf(getpwnam(user.c_str()));
  return home.empty() ? path : home + path.substr(end);
}

std::string desktopFolder() {
  const fs::path home = homeFolder();
  if (!isFolder(home)) {
    return "";
  }
  std::error_code ignored;
  for (const fs::path& folder : {namedDesktop(home), home / "Desktop"}) {
    fs::create_directories(folder, ignored);
    if (isFolder(folder) && access(folder.c_str(), W_OK | X_OK) == 0) {
      return folder.string();
    }
  }
  return "";
}

std::string temporaryFolder() {
  std::error_code ignored;
  const fs::path named = fs::temp_directory_path(ignored);
  // Everybody may write to these: mkdtemp makes a new folder, which nobody else has prepared.
  std::string folder;
  for (const fs::path& shared : {named, fs::path("/tmp"), fs::path("/var/tmp")}) {
    folder = (shared / "halvik-diagnostic-XXXXXX").string();
    if (shared.is_absolute() && mkdtemp(folder.data()) != nullptr) {
      break;
    }
  }
  return folder;
}

}  // namespace platform
