// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/entry.h"

#include <cstdlib>
#include <string>

#include "app/options.h"
#include "platform/boundary.h"
#include "platform/log.h"
#include "platform/process_setup.h"
#include "platform/url.h"

namespace app {

namespace {

OptionTable programOptions() {
  const diagnostics::Endpoints& endpoints = diagnostics::builtInEndpoints();
  return makeOptionTable(endpoints.serviceDomain, platform::hostOfUrl(endpoints.submitUrl));
}

// Returns only when the run is not to be headless.
void maybeRunWithoutGUIAndExit(const OptionValues& values, int& argc, char** argv,
                               const ControllerFactory& makeController, const Modes& modes) {
  if (!isSet(values, "silentSig")) {
    return;
  }
  const bool isConsole = isSet(values, "consoleSig");
  const bool isInternet = isSet(values, "internetSig");
  const std::string* outputFile = textOf(values, "outputSig");
  const std::unique_ptr<platform::Application> application = modes.makeApplication(
      argc, argv,
      uploadsWithoutWindow(isInternet, isConsole, outputFile != nullptr && !outputFile->empty()));
  const std::unique_ptr<MainController> controller = makeController(*application);
  controller->initArgsWithSilent(isSet(values, "silentSig"), isConsole, isSet(values, "skvSig"),
                                 isSet(values, "noskvSig"), isInternet);
  if (const std::string* domain = textOf(values, "domainSig")) {
    controller->setDomain(*domain);
  }
  if (outputFile != nullptr) {
    controller->setOutputFile(*outputFile);
  }
  controller->awakeFromNib();
  controller->runTests();
  application->run();
  application->exit(EXIT_SUCCESS);
}

}  // namespace

std::unique_ptr<MainController> makeMainController(platform::Application& application) {
  return std::make_unique<MainController>(application);
}

bool handleGateKeeperArgument(int argc, const char* const* argv) {
  for (int i = 0; i < argc; ++i) {
    // Padded, so that five characters can be taken of the shortest argument.
    if ((std::string(argv[i]) + "     ").substr(0, 5) == "-psn_") {
      return true;
    }
  }
  return false;
}

int runProgram(int argc, char** argv, const ControllerFactory& makeController, const Modes& modes) {
  int status = EXIT_SUCCESS;
  platform::setProcessName(argc > 0 ? argv[0] : "");
  platform::setUpProcess();
  platform::enter([&] {
    const OptionTable table = programOptions();
    const std::vector<std::string> arguments(argv, argv + argc);
    const OptionValues values = getValues(parseArguments(arguments), table);
    if (isSet(values, "helpSig")) {
      platform::log('\n' + generateHelp(table) + '\n');
      return;
    }
    if (!handleGateKeeperArgument(argc, argv)) {
      maybeRunWithoutGUIAndExit(values, argc, argv, makeController, modes);
    }
    status = modes.runWindowed(argc, argv, makeController);
  });
  return status;
}

}  // namespace app
