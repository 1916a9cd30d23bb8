// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// How large the window is, and whether everything in it has room.

#include "ui/window_fixture.h"

namespace ui {
namespace {

class MainWindowSizeTest : public WindowTest {
 protected:
  void SetUp() override {
    open({support::answer(support::reply("200 OK", "https://r.example/1"))});
  }
};

TEST_F(MainWindowSizeTest, CutsNothingOffAtItsSmallest) {
  for (const char* name : {"status", "progress", "results", "caption", "copy", "open"}) {
    find(name)->show();
  }
  window->resize(window->minimumSizeHint());
  QApplication::processEvents();
  for (const QWidget* widget :
       window->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    EXPECT_TRUE(window->rect().contains(widget->geometry())) << widget->objectName().toStdString();
    EXPECT_GE(widget->width(), widget->minimumSizeHint().width());
    EXPECT_GE(widget->height(), widget->minimumSizeHint().height());
    for (const QWidget* other :
         window->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      EXPECT_TRUE(widget == other || !widget->geometry().intersects(other->geometry()))
          << widget->objectName().toStdString() << " and " << other->objectName().toStdString();
    }
  }
}

TEST_F(MainWindowSizeTest, GivesTheResultsTheRoomWhenItGrows) {
  results()->show();
  const int before = results()->height();
  window->resize(window->width() + 200, window->height() + 300);
  QApplication::processEvents();
  EXPECT_EQ(results()->height(), before + 300);
}

TEST_F(MainWindowSizeTest, IsLowUntilTheFirstRunAndMovesNothingThen) {
  const int low = window->height();
  std::vector<QRect> places;
  for (const char* name : {"account", "ticket", "domain", "start"}) {
    places.push_back(find(name)->geometry());
  }
  EXPECT_LT(window->height() - find("start")->geometry().bottom(), find("start")->height());
  runOnce();
  QApplication::processEvents();
  EXPECT_GE(window->height(), low + results()->minimumHeight());
  std::vector<QRect> placesThen;
  for (const char* name : {"account", "ticket", "domain", "start"}) {
    placesThen.push_back(find(name)->geometry());
  }
  EXPECT_EQ(placesThen, places);
  const int high = window->height();
  const QRect resultsThen = results()->geometry();
  runOnce();
  QApplication::processEvents();
  EXPECT_EQ(window->height(), high);
  EXPECT_EQ(results()->geometry(), resultsThen);
}

TEST_F(MainWindowSizeTest, KeepsItsControlsTogetherWhenItIsEnlargedBeforeARun) {
  const QRect start = find("start")->geometry();
  window->resize(window->width(), window->height() + 300);
  QApplication::processEvents();
  EXPECT_EQ(find("start")->geometry(), start);
}

}  // namespace
}  // namespace ui
