// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/trim.h"

#include <stdexcept>

#include "platform/text.h"
#include "report/report.h"

namespace report {

namespace {

std::string_view keptBeginning(std::string_view section, std::size_t length) {
  if (platform::isInsideCharacter(section, length)) {
    throw std::runtime_error(
        "the report cannot be trimmed for the upload: the cut falls inside a character");
  }
  return section.substr(0, length);
}

void appendTrimmed(std::string& trimmed, std::string_view section, std::int32_t excess) {
  const bool isCut = section.find("tail") != std::string_view::npos;
  const std::int64_t lost = static_cast<std::int64_t>(trimMarker.size()) + excess;
  const std::int64_t keep =
      isCut ? static_cast<std::int64_t>(platform::utf16Length(section)) - lost : 0;
  if (keep >= 1) {
    trimmed += keptBeginning(section, static_cast<std::size_t>(keep));
    trimmed += trimMarker;
  } else {
    trimmed += section;
  }
}

}  // namespace

std::string trimTailData(std::string_view body, std::int32_t sizeMax) {
  std::string trimmed;
  // 32 bits as in the size limit itself: nothing is made of a body that is two gigabytes over it.
  const auto excess = static_cast<std::int32_t>(static_cast<std::int64_t>(body.size()) - sizeMax);
  if (excess <= 0) {
    return trimmed;
  }
  trimmed.reserve(body.size() + separator.size());
  for (bool isLast = false; !isLast;) {
    const std::size_t end = body.find(separator);
    isLast = end == std::string_view::npos;
    const std::string_view section = body.substr(0, end);
    if (!section.empty()) {
      trimmed += separator;
      appendTrimmed(trimmed, section, excess);
    }
    body.remove_prefix(isLast ? body.size() : end + separator.size());
  }
  return trimmed;
}

}  // namespace report
