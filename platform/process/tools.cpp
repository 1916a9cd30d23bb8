// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/tools.h"

#include <unistd.h>

#include <map>

#include "platform/process/helper_executable.h"

namespace platform {

namespace {

// The plan names its tools by the places where macOS keeps them. Scripts of ours answer for those
// that only macOS has.
std::string locate(const std::string& path) {
  static const std::map<std::string, std::string> elsewhere{
      {"/sbin/ping", "/usr/bin/ping"},
      {"/usr/sbin/netstat", "/usr/bin/netstat"},
      {"/usr/sbin/scutil", helperPath("scutil")},
      {"/usr/sbin/system_profiler", helperPath("system_profiler")},
      {"/usr/sbin/traceroute", "/usr/bin/traceroute"},
  };
  const auto known = elsewhere.find(path);
  const bool isElsewhere = known != elsewhere.end() && access(path.c_str(), F_OK) != 0;
  return isElsewhere ? known->second : path;
}

}  // namespace

Command locateCommand(const std::string& path, const std::vector<std::string>& args) {
  Command command{.path = locate(path), .args = args};
  if (path == "/bin/sh" && args.size() == 2 && args[0] == "-c") {
    const std::string& line = args[1];
    const std::string tool = line.substr(0, line.find(' '));
    command.args[1] = locate(tool) + line.substr(tool.size());
  }
  return command;
}

}  // namespace platform
