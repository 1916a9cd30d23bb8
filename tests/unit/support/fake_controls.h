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

/// Numbers as they are counted here: without decimals.
inline std::string whole(double value) {
  return std::to_string(static_cast<long long>(value));
}

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
  void setMinValue(double value) override { add("min " + whole(value)); }
  void setMaxValue(double value) override { add("max " + whole(value)); }
  void setDoubleValue(double value) override { add("value " + whole(value)); }
  void setControlTint(int tint) override { add("tint " + std::to_string(tint)); }
  void startAnimation() override { add("start"); }
  void stopAnimation() override { add("stop"); }
};

/// Keeps ASCII only.
struct FakeRichTextView final : ui::RichTextView {
  FakeRichTextView(std::string itsName, Calls& record) : name(std::move(itsName)), calls(record) {}
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
  void setTextColor(const ui::Color& color) override { add("text colour " + numbers(color)); }
  void setLinkColor(const ui::Color& color) override { add("link colour " + numbers(color)); }

 private:
  static std::string numbers(const ui::Color& color) {
    return std::to_string(color.red) + ' ' + std::to_string(color.green) + ' ' +
           std::to_string(color.blue);
  }
  void add(const std::string& request) { calls.push_back(name + ' ' + request); }

  std::string name;
  Calls& calls;
  std::u16string shown;
};

struct FakeTitle final : ui::Window {
  explicit FakeTitle(Calls& record) : calls(record) {}
  void setTitle(const std::string& title) override { calls.push_back("window title " + title); }
  Calls& calls;
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
  FakeTitle window{calls};
  FakeButton copy{"copy", calls};
  FakeButton open{"open", calls};
  FakeDesktop desktop{desktopCalls};
};

}  // namespace support
