// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/notification_center.h"

#include <utility>

namespace text {

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

void NotificationCenter::addObserver(std::string_view name, const void* object, Handler handler) {
  observations[object].push_back({.name = std::string(name), .handler = std::move(handler)});
}

void NotificationCenter::post(std::string_view name, const void* object) const {
  const auto found = observations.find(object);
  if (found == observations.end()) {
    return;
  }
  // A copy, since a handler may add observers of the same object.
  const std::vector<Observation> called = found->second;
  for (const Observation& observation : called) {
    if (observation.name == name) {
      observation.handler();
    }
  }
}

void NotificationCenter::forget(const void* object) {
  observations.erase(object);
}

}  // namespace text
