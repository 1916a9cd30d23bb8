// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: a command line, its arguments separated by NUL. Property: what the parser makes of it is
// what the rules, followed one character and one entry at a time, make of it.

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app/options.h"
#include "fuzz/support.h"

namespace {

using app::OptionValue;
using Entries = std::vector<std::pair<std::string, OptionValue>>;

void put(Entries& entries, const std::string& key, const OptionValue& value) {
  for (auto& [present, its] : entries) {
    if (present == key) {
      its = value;
      return;
    }
  }
  entries.emplace_back(key, value);
}

std::vector<std::string> splitAtEquals(const std::string& argument) {
  std::vector<std::string> parts(1);
  for (const char c : argument) {
    if (c == '=') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

// Nothing when an argument is empty, which is an error.
std::optional<Entries> parseSlowly(const std::vector<std::string>& arguments) {
  Entries parsed;
  for (const std::string& argument : arguments) {
    if (argument.empty()) {
      return std::nullopt;
    }
    if (argument[0] != '-') {
      continue;
    }
    const std::vector<std::string> parts = splitAtEquals(argument);
    if (parts.size() == 1) {
      put(parsed, parts[0], true);
    } else {
      put(parsed, parts[0] + "=", parts[parts.size() - 1]);
    }
  }
  return parsed;
}

bool sortsBefore(const std::string& a, const std::string& b) {
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    if (a[i] != b[i]) {
      return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[i]);
    }
  }
  return a.size() < b.size();
}

// Every entry that is an option's is looked at, not only up to the first.
Entries resolveSlowly(const Entries& parsed, const app::OptionTable& table) {
  Entries values;
  for (const auto& [option, record] : table) {
    const std::pair<std::string, OptionValue>* chosen = nullptr;
    for (const auto& entry : parsed) {
      for (const std::string& signature : record.signature) {
        const bool isBetter = chosen == nullptr || sortsBefore(entry.first, chosen->first);
        if (entry.first == signature && isBetter) {
          chosen = &entry;
        }
      }
    }
    if (!parsed.empty()) {
      values.emplace_back(option, chosen == nullptr ? record.defaultValue : chosen->second);
    }
  }
  return values;
}

bool areSame(const std::map<std::string, OptionValue>& map, const Entries& entries) {
  for (const auto& [key, value] : entries) {
    const auto found = map.find(key);
    if (found == map.end() || found->second != value) {
      return false;
    }
  }
  return map.size() == entries.size();
}

void checkReaders(const app::OptionValues& values, const Entries& expected,
                  const app::OptionTable& table) {
  for (const auto& [option, record] : table) {
    bool flag = false;
    std::optional<std::string> text;
    for (const auto& [key, value] : expected) {
      if (key == option && value == OptionValue(true)) {
        flag = true;
      }
      if (key == option && std::holds_alternative<std::string>(value)) {
        text = std::get<std::string>(value);
      }
    }
    const std::string* read = app::textOf(values, option);
    fuzz::check(app::isSet(values, option) == flag, "a flag reads as it was given");
    fuzz::check((read != nullptr) == text.has_value(), "a text is there when it was given");
    fuzz::check(read == nullptr || *read == *text, "a text reads as it was given");
    const bool isFlag = record.signature[0].back() != '=';
    fuzz::check(!(isFlag ? text.has_value() : flag), "an option has values of its own kind only");
  }
}

std::optional<app::ParsedArguments> parse(const std::vector<std::string>& arguments) {
  try {
    return app::parseArguments(arguments);
  } catch (const std::out_of_range&) {
    return std::nullopt;
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const app::OptionTable table = app::makeOptionTable("halvik.example", "host.example");
  std::vector<std::string> arguments;
  for (fuzz::Fields fields(fuzz::asText(data, size), '\0'); !fields.atEnd();) {
    arguments.emplace_back(fields.next());
  }
  const std::optional<app::ParsedArguments> parsed = parse(arguments);
  const std::optional<Entries> expected = parseSlowly(arguments);
  fuzz::check(parsed.has_value() == expected.has_value(), "an empty argument is the one error");
  if (!parsed) {
    return 0;
  }
  fuzz::check(areSame(*parsed, *expected), "the arguments are parsed by the rules");
  const app::OptionValues values = app::getValues(*parsed, table);
  const Entries expectedValues = resolveSlowly(*expected, table);
  fuzz::check(areSame(values, expectedValues), "the options have the values of the rules");
  checkReaders(values, expectedValues, table);
  return 0;
}
