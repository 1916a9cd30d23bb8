// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The command line: its table of options, the parser and the usage text. Functions of their
// arguments only.

#pragma once

#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace app {

/// The value of a value option that was not given; distinct from every text.
using NullMarker = std::monostate;

/// The value of a flag, or of an option that takes a text. Texts are bytes as given.
using OptionValue = std::variant<NullMarker, bool, std::string>;

/// How an option is written on the command line, what it does, and its value when it is not given.
/// A signature that ends in "=" takes a value behind it, any other one is a flag.
struct OptionRecord {
  std::vector<std::string> signature;
  std::string help;
  OptionValue defaultValue;
};

/// Options by key, in the order of the usage text.
using OptionTable = std::vector<std::pair<std::string, OptionRecord>>;

/// Arguments as written (up to and including their first "=") with what stands behind their last
/// "=", or true.
using ParsedArguments = std::map<std::string, OptionValue>;

/// Options by key. Empty when no argument began with "-": a missing key reads as false or as the
/// null marker.
using OptionValues = std::map<std::string, OptionValue>;

/// The program's options. `serviceDomain` and `submitHost` are shown in the help texts.
OptionTable makeOptionTable(const std::string& serviceDomain, const std::string& submitHost);

/// Reads all of `arguments`, the program's own path included; whatever does not begin with "-" is
/// passed over, and of several arguments with the same key the last one counts. Throws
/// std::out_of_range on an empty argument, which has no first character to look at.
ParsedArguments parseArguments(const std::vector<std::string>& arguments);

/// The value of every option of `table`: the matching argument's, else the default. Of two
/// spellings of one option that are both given, the one that sorts first counts ("--output=" before
/// "-o=").
OptionValues getValues(const ParsedArguments& parsed, const OptionTable& table);

/// The usage text: a line and an empty line for each option.
std::string generateHelp(const OptionTable& table);

bool isSet(const OptionValues& values, const std::string& key);

/// The text given for `key`, or null when there is none.
const std::string* textOf(const OptionValues& values, const std::string& key);

}  // namespace app
