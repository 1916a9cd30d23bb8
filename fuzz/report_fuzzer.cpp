// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: fields separated by the byte 31: account and ticket, then name, standard output and
// standard error of each command; a single "~" means absent. Properties: the report is its parts
// one behind the other, what a command printed is not copied, and account, ticket and the text up
// to the first NUL are cut as by the slow reference.

#include <optional>
#include <string>
#include <vector>

#include "fuzz/slow_utf8.h"
#include "fuzz/support.h"
#include "report/report.h"
#include "text/utf8.h"

namespace {

using Text = std::optional<std::string>;

// A command as the report shows it, its texts kept where they are.
struct Command {
  std::string name;
  Text output;
  Text error;
};

Text present(std::string_view field) {
  return field == "~" ? std::nullopt : Text(field);
}

std::string formatSlowly(const Command& command) {
  std::string text;
  for (int i = 0; i < 45; ++i) {
    text = text + "-";
  }
  text = text + "Results for: " + command.name + "\n";
  if (command.output && *command.output != "") {
    text = text + "stdout:\n" + *command.output + "\n";
  }
  if (command.error && *command.error != "") {
    text = text + "stderr:\n" + *command.error + "\n";
  }
  return text;
}

std::string reportSlowly(const Text& account, const Text& ticket,
                         const std::vector<Command>& commands) {
  std::string text;
  if (account) {
    text = text + "Halvik account: " + *account + "\n";
  }
  if (ticket) {
    text = text + "Halvik ticket: " + *ticket + "\n";
  }
  for (const Command& command : commands) {
    text = text + formatSlowly(command);
  }
  return text;
}

std::string untilNulSlowly(const std::string& text) {
  std::string beginning;
  for (const char c : text) {
    if (c == 0) {
      break;
    }
    beginning += c;
  }
  return beginning;
}

constexpr std::u32string_view tabAndSpaces =
    U"\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u202F"
    U"\u205F\u3000";

bool isTabOrSpace(char32_t character) {
  return tabAndSpaces.find(character) != std::u32string_view::npos;
}

std::string trimSlowly(std::u32string characters) {
  while (!characters.empty() && isTabOrSpace(characters.front())) {
    characters.erase(0, 1);
  }
  while (!characters.empty() && isTabOrSpace(characters.back())) {
    characters.pop_back();
  }
  return fuzz::encode(characters);
}

// What the user typed, as it gets into the head.
Text typed(std::string_view field) {
  const auto characters = fuzz::decode(field);
  if (!characters) {
    return std::nullopt;
  }
  const std::string trimmed = text::trimSpaces(field);
  fuzz::check(trimmed == trimSlowly(*characters), "the spaces at both ends are gone");
  return trimmed;
}

bool isAmong(const text::Buffers& buffers, const std::string& text) {
  for (const std::string_view buffer : buffers) {
    if (buffer.data() == text.data() && buffer.size() == text.size()) {
      return true;
    }
  }
  return false;
}

void addBlock(text::Buffers& report, const Command& command) {
  const std::size_t before = report.size();
  report::addBlock(report, {.displayName = command.name,
                            .standardOutput = command.output,
                            .standardError = command.error});
  const text::Buffers block(report.begin() + static_cast<std::ptrdiff_t>(before), report.end());
  fuzz::check(text::join(block) == formatSlowly(command), "a block has its form");
}

void checkUntilNul(const text::Buffers& buffers, const std::string& whole) {
  const std::string beginning = untilNulSlowly(whole);
  fuzz::check(text::join(text::untilNul(buffers)) == beginning, "buffers end at the first NUL");
  fuzz::check(text::join(buffers, text::Until::firstNul) == beginning,
              "joined, they end there too");
  fuzz::check(text::untilNul(std::string_view(whole)) == beginning, "a text ends at the first NUL");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Fields fields(fuzz::asText(data, size), '\x1F');
  const auto nextTyped = [&fields] {
    const std::string_view field = fields.next();
    return field == "~" ? std::nullopt : typed(field);
  };
  const Text account = nextTyped();
  const Text ticket = nextTyped();
  std::vector<Command> commands;
  while (!fields.atEnd()) {
    Command command;
    command.name = fields.next();
    command.output = present(fields.next());
    command.error = present(fields.next());
    commands.push_back(command);
  }

  const std::string head = report::headOf(account, ticket);
  text::Buffers report{head};
  for (const Command& command : commands) {
    addBlock(report, command);
  }
  const std::string expected = reportSlowly(account, ticket, commands);
  fuzz::check(text::join(report) == expected, "the report is its parts in order");
  for (const Command& command : commands) {
    for (const Text* text : {&command.output, &command.error}) {
      fuzz::check(!*text || (*text)->empty() || isAmong(report, **text),
                  "what a command printed stays where it is");
    }
  }
  checkUntilNul(report, expected);
  return 0;
}
