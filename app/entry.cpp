// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/entry.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "app/options.h"
#include "platform/event_loop/fatal_error.h"
#include "platform/process/process_setup.h"
#include "text/log.h"
#include "text/url.h"

namespace app {

namespace {

// Returns only when the run is not to be headless.
void maybeRunWithoutGUIAndExit(const OptionValues& values,
                               const ControllerFactory& makeController) {
  if (!isSet(values, "silentSig")) {
    return;
  }
  platform::refuseSetuid();
  platform::EventLoop loop;
  const std::unique_ptr<MainController> controller = makeController(loop);
  controller->initArgsWithSilent(isSet(values, "silentSig"), isSet(values, "consoleSig"),
                                 isSet(values, "skvSig"), isSet(values, "noskvSig"),
                                 isSet(values, "internetSig"));
  if (const std::string* domain = textOf(values, "domainSig")) {
    controller->setDomain(*domain);
  }
  if (const std::string* outputFile = textOf(values, "outputSig")) {
    controller->setOutputFile(*outputFile);
  }
  controller->awakeFromNib();
  controller->runTests();
  loop.run();
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

std::unique_ptr<MainController> makeMainController(platform::EventLoop& loop) {
  return std::make_unique<MainController>(loop);
}

bool handleGateKeeperArgument(int argc, const char* const* argv) {
  return std::any_of(argv, argv + argc, [](const char* argument) {
    return std::string_view(argument).starts_with("-psn_");
  });
}

int runProgram(int argc, char** argv, const ControllerFactory& makeController,
               const WindowedMode& runWindowed) {
  int status = EXIT_SUCCESS;
  text::setProcessName(argc > 0 ? argv[0] : "");
  platform::setUpProcess();
  platform::guarded([&] {
    const diagnostics::Endpoints& endpoints = diagnostics::builtInEndpoints();
    const OptionTable table =
        makeOptionTable(endpoints.serviceDomain, text::hostOfUrl(endpoints.submitUrl));
    const std::vector<std::string> arguments(argv, argv + argc);
    const OptionValues values = getValues(parseArguments(arguments), table);
    if (isSet(values, "helpSig")) {
      text::log('\n' + generateHelp(table) + '\n');
      return;
    }
    if (!handleGateKeeperArgument(argc, argv)) {
      maybeRunWithoutGUIAndExit(values, makeController);
    }
    status = runWindowed(argc, argv, makeController);
  });
  return status;
}

}  // namespace app
