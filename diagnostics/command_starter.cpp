// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/command_starter.h"

namespace diagnostics {

CommandStarter& CommandStarter::named(std::string_view /*name*/) {
  return *this;
}

void CommandStarter::startTest(const std::string& launchPath,
                               const std::vector<std::string>& args) {
  startTest(launchPath, args, std::nullopt);
}

void CommandStarter::startPing(const std::string& host, const std::string& comment) {
  startTest("/sbin/ping", {"-c", "5", host}, comment);
}

void CommandStarter::startTraceroute(const std::string& host) {
  // The option and its value in one argument, blank included: support staff know the report's line
  // in this form.
  startTest("/usr/sbin/traceroute", {"-I", "-w 2", host}, std::nullopt);
}

}  // namespace diagnostics
