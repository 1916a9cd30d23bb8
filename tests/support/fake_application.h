// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// An application whose loop returns at once.

#pragma once

#include <cstdlib>
#include <functional>
#include <memory>

#include "platform/application.h"
#include "support/application.h"

namespace support {

class FakeApplication final : public platform::Application {
 public:
  void setDelegate(platform::ApplicationDelegate& itsDelegate) override { delegate = &itsDelegate; }
  int run() override {
    whenRun();
    return EXIT_FAILURE;
  }
  void turn() override {}
  void post(std::function<void()> /*task*/) override {}
  platform::DescriptorSet& descriptors() override { return support::application().descriptors(); }
  std::unique_ptr<platform::HttpConnection> send(
      platform::HttpRequest /*request*/, platform::HttpConnectionDelegate& /*delegate*/,
      std::chrono::milliseconds /*stallLimit*/) override {
    return nullptr;
  }

  platform::ApplicationDelegate* delegate = nullptr;
  std::function<void()> whenRun = [] {};
};

}  // namespace support
