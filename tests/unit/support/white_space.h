// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The characters that are white space to the program, and those that only look like it.

#pragma once

#include <array>
#include <string>

namespace support {

/// A character, as it stands in the text view and as it stands in everything else.
struct Character {
  char16_t unit;
  const char* utf8;
};

struct WhiteSpace : Character {
  /// Whether it is dropped at both ends of an account and of a ticket: the tab and the spaces are,
  /// line breaks are not.
  bool isTrimmed;
};

/// Each of them ends an address.
inline constexpr auto whiteSpaces = std::to_array<WhiteSpace>({
    {{u'\t', "\t"}, true},          {{u'\n', "\n"}, false},        {{u'\v', "\v"}, false},
    {{u'\f', "\f"}, false},         {{u'\r', "\r"}, false},        {{u' ', " "}, true},
    {{u'\u0085', "\u0085"}, false}, {{u'\u00A0', "\u00A0"}, true}, {{u'\u1680', "\u1680"}, true},
    {{u'\u2000', "\u2000"}, true},  {{u'\u2001', "\u2001"}, true}, {{u'\u2002', "\u2002"}, true},
    {{u'\u2003', "\u2003"}, true},  {{u'\u2004', "\u2004"}, true}, {{u'\u2005', "\u2005"}, true},
    {{u'\u2006', "\u2006"}, true},  {{u'\u2007', "\u2007"}, true}, {{u'\u2008', "\u2008"}, true},
    {{u'\u2009', "\u2009"}, true},  {{u'\u200A', "\u200A"}, true}, {{u'\u2028', "\u2028"}, false},
    {{u'\u2029', "\u2029"}, false}, {{u'\u202F', "\u202F"}, true}, {{u'\u205F', "\u205F"}, true},
    {{u'\u3000', "\u3000"}, true},
});

/// Neighbours of the above, separators of another kind, and what cannot be seen: they are part of
/// an address, of an account and of a ticket.
inline constexpr auto noWhiteSpaces = std::to_array<Character>({
    {u'\u0008', "\u0008"}, {u'\u000E', "\u000E"}, {u'\u001B', "\u001B"}, {u'\u001C', "\u001C"},
    {u'\u001D', "\u001D"}, {u'\u001E', "\u001E"}, {u'\u001F', "\u001F"}, {u'!', "!"},
    {u'\u007F', "\u007F"}, {u'\u0084', "\u0084"}, {u'\u0086', "\u0086"}, {u'\u009F', "\u009F"},
    {u'\u00A1', "\u00A1"}, {u'\u00AD', "\u00AD"}, {u'\u167F', "\u167F"}, {u'\u1681', "\u1681"},
    {u'\u180E', "\u180E"}, {u'\u1FFF', "\u1FFF"}, {u'\u200B', "\u200B"}, {u'\u200C', "\u200C"},
    {u'\u200D', "\u200D"}, {u'\u2027', "\u2027"}, {u'\u202A', "\u202A"}, {u'\u202E', "\u202E"},
    {u'\u2030', "\u2030"}, {u'\u205E', "\u205E"}, {u'\u2060', "\u2060"}, {u'\u2800', "\u2800"},
    {u'\u2FFF', "\u2FFF"}, {u'\u3001', "\u3001"}, {u'\u3164', "\u3164"}, {u'\uFDD0', "\uFDD0"},
    {u'\uFDD1', "\uFDD1"}, {u'\uFEFF', "\uFEFF"}, {u'\uFFFC', "\uFFFC"}, {u'\uFFFF', "\uFFFF"},
});

}  // namespace support
