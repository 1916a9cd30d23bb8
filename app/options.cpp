// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/options.h"

#include <algorithm>
#include <stdexcept>

namespace app {

namespace {

OptionValue resolve(const OptionRecord& option, const ParsedArguments& parsed) {
  for (const auto& [key, value] : parsed) {
    if (std::ranges::find(option.signature, key) != option.signature.end()) {
      return value;
    }
  }
  return option.defaultValue;
}

}  // namespace

OptionTable makeOptionTable(const std::string& serviceDomain, const std::string& submitHost) {
  return {
      {"domainSig",
       {{"-d=", "--domain="},
        "A specific URL to target with tests (e.g. " + serviceDomain + ")",
        NullMarker()}},
      {"silentSig",
       {{"-s", "--silent"},
        "Automatically run tests in silent mode (will not show the UI or new windows; defaults "
        "to -i output)",
        false}},
      {"internetSig",
       {{"-i", "--internet"},
        "Output all results to " + submitHost +
            "; destination URL will print to console as 'url=URL'",
        false}},
      {"outputSig",
       {{"-o=", "--output="},
        "Output to a file, which will print to console as 'outputFile=FILE'; can be a full path, "
        "make sure to use \"quotes\" if needed",
        NullMarker()}},
      {"consoleSig", {{"-c", "--console"}, "Output all results to console as text", false}},
      {"skvSig", {{"--skv"}, "Force the Skivra tests to be performed", false}},
      {"noskvSig", {{"--noskv"}, "Skip the Skivra tests even if it's installed", false}},
      {"helpSig", {{"-h", "--help", "-?"}, "Display this usage statement", false}},
  };
}

ParsedArguments parseArguments(const std::vector<std::string>& arguments) {
  ParsedArguments parsed;
  for (const std::string& argument : arguments) {
    if (argument.empty()) {
      throw std::out_of_range(
          "an argument on the command line is empty: it has no first character");
    }
    if (argument.front() != '-') {
      continue;
    }
    const std::size_t first = argument.find('=');
    if (first == std::string::npos) {
      parsed[argument] = true;
    } else {
      parsed[argument.substr(0, first + 1)] = argument.substr(argument.rfind('=') + 1);
    }
  }
  return parsed;
}

OptionValues getValues(const ParsedArguments& parsed, const OptionTable& table) {
  OptionValues values;
  if (parsed.empty()) {
    return values;
  }
  for (const auto& [key, option] : table) {
    values[key] = resolve(option, parsed);
  }
  return values;
}

std::string generateHelp(const OptionTable& table) {
  std::string help;
  for (const auto& [key, option] : table) {
    for (const std::string& spelling : option.signature) {
      help += spelling + ' ';
    }
    help.back() = ',';
    help += ' ' + option.help + "\n\n";
  }
  return help;
}

bool isSet(const OptionValues& values, const std::string& key) {
  const auto found = values.find(key);
  return found != values.end() && found->second == OptionValue(true);
}

const std::string* textOf(const OptionValues& values, const std::string& key) {
  const auto found = values.find(key);
  return found == values.end() ? nullptr : std::get_if<std::string>(&found->second);
}

}  // namespace app
