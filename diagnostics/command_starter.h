// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The way from the plan to the commands: the plan says what to start, a CommandStarter starts it.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace diagnostics {

/// Starts tests, in the order in which they are to stand in the report. Whoever wants to see a plan
/// instead of running it overrides startTest.
class CommandStarter {
 public:
  /// The name of the test that is started next, by which readers of reports know it. The report does
  /// not show it.
  virtual CommandStarter& named(std::string_view name);

  /// Starts one command. `comment` tells the reader of the report what the arguments alone do not.
  virtual void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                         const std::optional<std::string>& comment) = 0;

  void startTest(const std::string& launchPath, const std::vector<std::string>& args);

  /// Five echo requests to `host`.
  void startPing(const std::string& host, const std::string& comment);

  /// The route to `host`, probed with ICMP echo, two seconds a probe.
  void startTraceroute(const std::string& host);

 protected:
  CommandStarter() = default;
  CommandStarter(const CommandStarter&) = default;
  CommandStarter& operator=(const CommandStarter&) = default;
  ~CommandStarter() = default;
};

}  // namespace diagnostics
