// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// How the controller reaches the window's controls, which a run without a window does not have.

#pragma once

#include <functional>
#include <optional>
#include <utility>

namespace ui {

/// Names a control that may be absent. What is sent to an absent control does nothing; what is
/// asked of it has no answer. The control is not owned.
template <class Control>
class Outlet {
 public:
  /// `target` must outlive every use of the outlet.
  void connect(Control& target) { control = &target; }

  /// Calls `operation` on the control.
  template <class Operation, class... Arguments>
  void send(Operation operation, Arguments&&... arguments) const {
    if (control != nullptr) {
      std::invoke(operation, *control, std::forward<Arguments>(arguments)...);
    }
  }

  /// The answer of the control to `question`, or none.
  template <class Question, class... Arguments>
  auto ask(Question question, Arguments&&... arguments) const
      -> std::optional<std::invoke_result_t<Question, Control&, Arguments...>> {
    if (control == nullptr) {
      return std::nullopt;
    }
    return std::invoke(question, *control, std::forward<Arguments>(arguments)...);
  }

 private:
  Control* control = nullptr;
};

}  // namespace ui
