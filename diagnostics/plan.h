// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The fixed plan of diagnostic commands: what is run, with which arguments, in which order. The
// plan says what to start, a CommandStarter starts it.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/endpoints.h"
#include "platform/files/files.h"

namespace diagnostics {

/// Starts tests, in the order in which they are to stand in the report. A class that shows a plan
/// instead of running it overrides startTest.
class CommandStarter {
 public:
  /// The name of the test that is started next, by which readers of reports know it. The report
  /// does not show it.
  virtual CommandStarter& named(std::string_view name);

  /// Starts one command. `comment` stands in the report and says what the arguments do not.
  virtual void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                         const std::optional<std::string>& comment) = 0;

  void startTest(const std::string& launchPath, const std::vector<std::string>& args) {
    startTest(launchPath, args, std::nullopt);
  }

  /// Five echo requests to `host`.
  void startPing(const std::string& host, const std::string& comment);

  /// The route to `host`, probed with ICMP echo, two seconds a probe.
  void startTraceroute(const std::string& host);

 protected:
  ~CommandStarter() = default;
};

/// The domain that the user wants tested, used verbatim as an argument; absent when nobody could
/// name one.
using TestDomain = std::optional<std::string>;

/// Where the Skivra keeps its files; no trailing "/".
inline constexpr const char* skivraFolder = "/Library/Application Support/Halvik Skivra";

/// The domain to test: `option` unless it is absent or empty, else `field`, without its blanks
/// (U+0020).
TestDomain makeTestDomain(const std::optional<std::string>& option,
                          const std::optional<std::string>& field);

/// Starts the tests that every run makes, with those of `domain` if it is one that can be asked
/// for.
void startGeneralTests(CommandStarter& starter, const Endpoints& endpoints,
                       const TestDomain& domain);

/// Starts the tests of the Skivra that stand before its beacon logs.
void startSkivraTests(CommandStarter& starter, const Endpoints& endpoints,
                      const TestDomain& domain);

/// Starts the tests of the Skivra that stand after its beacon logs; `tailSize` lines of the system
/// log are searched.
void startSystemLogAndBlockingTests(CommandStarter& starter, const Endpoints& endpoints,
                                    std::int32_t tailSize);

/// The three folders of the Skivra's beacon logs, in the order of the report, each with a trailing
/// "/".
std::vector<std::string> beaconLogFolders();

/// The full paths of `entries` of `folder` (which ends in "/"), the oldest entry first. Entries
/// that were created at the same moment are ordered by name.
std::vector<std::string> orderByCreation(const std::string& folder,
                                         std::vector<platform::FolderEntry> entries);

/// The shell command line that prints the file at `path`, between double quotes, not escaped.
std::string readerCommandLine(const std::string& path);

}  // namespace diagnostics
