// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A window of controls that record what they are asked to do, for tests of what the controller does
// and in which order.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/main_controller.h"
#include "platform/desktop/desktop.h"
#include "ui/controls.h"

namespace support {

/// What has been asked of the controls of one window, in order: the control's name and the request.
using Calls = std::vector<std::string>;

template <class Interface>
class FakeControl : public Interface {
 public:
  FakeControl(std::string itsName, Calls& record) : name(std::move(itsName)), calls(record) {}
  void setHidden(bool hidden) override { add(hidden ? "hide" : "show"); }
  void setEnabled(bool enabled) override { add(enabled ? "enable" : "disable"); }

 protected:
  void add(const std::string& request) { calls.push_back(name + ' ' + request); }

 private:
  std::string name;
  Calls& calls;
};

using FakeButton = FakeControl<ui::Button>;
using FakeScrollView = FakeControl<ui::ScrollView>;

struct FakeTextField final : FakeControl<ui::TextField> {
  using FakeControl::FakeControl;
  std::string stringValue() const override { return text; }
  std::string text;
};

struct FakeLabel final : FakeControl<ui::Label> {
  using FakeControl::FakeControl;
  void setStringValue(const std::string& text) override { add("text " + text); }
};

struct FakeProgressBar final : FakeControl<ui::ProgressBar> {
  using FakeControl::FakeControl;
  void setRange(int minimum, int maximum) override {
    add("range " + std::to_string(minimum) + " to " + std::to_string(maximum));
  }
  void setValue(int value) override { add("value " + std::to_string(value)); }
  void setAnimated(bool animated) override { add(animated ? "start" : "stop"); }
};

/// Keeps ASCII only.
struct FakeRichTextView final : FakeControl<ui::RichTextView> {
  using FakeControl::FakeControl;
  void setString(const std::string& text) override {
    shown = std::u16string(text.begin(), text.end());
    add("set " + text);
  }
  std::u16string string() const override { return shown; }
  void addLinks(const std::vector<ui::TextRange>& ranges) override {
    std::string request = "links";
    for (const ui::TextRange& range : ranges) {
      request += ' ' + std::to_string(range.position) + '+' + std::to_string(range.length);
    }
    add(request);
  }

 private:
  std::u16string shown;
};

struct FakeTitle final : FakeControl<ui::Window> {
  using FakeControl::FakeControl;
  void setTitle(const std::string& title) override { add("title " + title); }
};

struct FakeDesktop final : platform::Desktop {
  explicit FakeDesktop(Calls& record) : calls(record) {}
  void copyToClipboard(const std::string& text) override { calls.push_back("copy " + text); }
  void openUrl(const std::string& url) override { calls.push_back("browse " + url); }
  void openInTextEditor(const std::string& path) override { calls.push_back("edit " + path); }
  Calls& calls;
};

/// All controls of a window, and the desktop, whose calls are kept apart.
struct FakeWindow {
  explicit FakeWindow(app::MainController& controller) {
    controller.buttonStartTests.connect(start);
    controller.textHalvikAccount.connect(account);
    controller.textTicketNo.connect(ticket);
    controller.textDomainToTest.connect(domain);
    controller.progressIndicator.connect(progress);
    controller.textStatus.connect(status);
    controller.textCopyPaste.connect(caption);
    controller.textResultsLinkView.connect(scroll);
    controller.textResultsLink.connect(results);
    controller.window.connect(window);
    controller.copyToClipBoardLink.connect(copy);
    controller.shareButton.connect(open);
    controller.desktop.connect(desktop);
  }

  Calls calls;
  Calls desktopCalls;
  FakeButton start{"start", calls};
  FakeTextField account{"account", calls};
  FakeTextField ticket{"ticket", calls};
  FakeTextField domain{"domain", calls};
  FakeProgressBar progress{"progress", calls};
  FakeLabel status{"status", calls};
  FakeLabel caption{"caption", calls};
  FakeScrollView scroll{"scroll", calls};
  FakeRichTextView results{"results", calls};
  FakeTitle window{"window", calls};
  FakeButton copy{"copy", calls};
  FakeButton open{"open", calls};
  FakeDesktop desktop{desktopCalls};
};

}  // namespace support
