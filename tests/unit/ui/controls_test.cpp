// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/controls.h"

#include <gtest/gtest.h>

#include <string>

namespace ui {
namespace {

struct Light {
  void set(bool on) { isOn = on; }
  std::string text() const { return isOn ? "on" : "off"; }
  bool isOn = false;
};

TEST(Outlet, DoesNothingWithoutAControl) {
  const Outlet<Light> outlet;
  outlet.send(&Light::set, true);
  EXPECT_EQ(outlet.ask(&Light::text), std::nullopt);
}

TEST(Outlet, PassesOperationsAndAnswersOn) {
  Light light;
  Outlet<Light> outlet;
  outlet.connect(light);
  outlet.send(&Light::set, true);
  EXPECT_TRUE(light.isOn);
  EXPECT_EQ(outlet.ask(&Light::text), "on");
}

}  // namespace
}  // namespace ui
