// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The process-wide notification center, by which an object calls its observers. Main thread only.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace text {

/// Finds the observers of a notification by its name and its object in constant time.
class NotificationCenter {
 public:
  using Handler = std::function<void()>;

  /// The one centre of this process.
  static NotificationCenter& defaultCenter() {
    static NotificationCenter center;
    return center;
  }

  /// Calls `handler` on every post of `name` by `object`, in order, until forget(`object`).
  void addObserver(std::string_view name, const void* object, Handler handler) {
    observations[object].emplace_back(name, std::move(handler));
  }

  /// Calls the observers of `name` and `object` before it returns.
  void post(std::string_view name, const void* object) const {
    if (const auto found = observations.find(object); found != observations.end()) {
      // A copy, since a handler may add observers of the same object.
      for (const auto& [observed, handler] : std::vector(found->second)) {
        if (observed == name) {
          handler();
        }
      }
    }
  }

  /// Ends every observation of `object`, before another object may get its address.
  void forget(const void* object) { observations.erase(object); }

 private:
  std::unordered_map<const void*, std::vector<std::pair<std::string, Handler>>> observations;
};

}  // namespace text
