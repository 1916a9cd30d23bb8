// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTextBlock>
#include <QTimer>
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <map>

#include "support/recorded_plan.h"
#include "ui/window_fixture.h"

namespace ui {
namespace {

const std::string resultsUrl = "https://results.halvik.example/r/1";

support::HttpServer::Behaviour succeed() {
  return support::answer(support::reply("200 OK", resultsUrl));
}

support::HttpServer::Behaviour failWith(const std::string& status) {
  return support::answer(support::reply(status, "no"));
}

// Breaks off behind the first piece of a good reply.
support::HttpServer::Behaviour breakOff() {
  return support::answer("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\nhttps://");
}

class WindowControl : public WindowTest {
 protected:
  std::map<std::string, bool> shown() const {
    std::map<std::string, bool> visible;
    for (const char* name : {"status", "progress", "results", "caption", "copy", "open"}) {
      visible[name] = find(name)->isVisible();
    }
    return visible;
  }

  std::map<std::string, bool> enabled() const {
    std::map<std::string, bool> usable;
    for (const char* name : {"account", "ticket", "domain", "start"}) {
      EXPECT_TRUE(find(name)->isVisible());
      usable[name] = find(name)->isEnabled();
    }
    return usable;
  }

  // The addresses that the results link to, in the order in which they stand.
  std::vector<std::string> links() const {
    std::vector<std::string> found;
    const QTextDocument& document = *results()->document();
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
      for (auto part = block.begin(); !part.atEnd(); ++part) {
        if (const QString link = part.fragment().charFormat().anchorHref(); !link.isEmpty()) {
          found.push_back(link.toStdString());
        }
      }
    }
    return found;
  }

  static std::map<std::string, bool> all(bool isEnabled) {
    return {
        {"account", isEnabled}, {"ticket", isEnabled}, {"domain", isEnabled}, {"start", isEnabled}};
  }

  static std::map<std::string, bool> phase(bool running, bool withResults, bool withCaption,
                                           bool withButtons) {
    return {{"status", running},      {"progress", running}, {"results", withResults},
            {"caption", withCaption}, {"copy", withButtons}, {"open", withButtons}};
  }
  const std::map<std::string, bool> idle = phase(false, false, false, false);
  const std::map<std::string, bool> running = phase(true, false, false, false);
  const std::map<std::string, bool> succeeded = phase(false, true, true, true);
  const std::map<std::string, bool> failed = phase(false, true, false, true);
};

TEST_F(WindowControl, ShowsEachPhaseAsItShould) {
  open({succeed(), failWith("500 Oops"), succeed()});
  EXPECT_EQ(shown(), idle);
  EXPECT_EQ(enabled(), all(true));
  pressStart();
  EXPECT_EQ(shown(), running);
  EXPECT_EQ(enabled(), all(false));
  finish();
  EXPECT_EQ(shown(), succeeded);
  EXPECT_EQ(enabled(), all(true));
  EXPECT_EQ(shownText(), "See results at " + resultsUrl);
  pressStart();
  EXPECT_EQ(shown(), running);
  finish();
  EXPECT_EQ(shown(), failed);
  EXPECT_EQ(shownText(), "There was an error submitting the results");
  pressStart();
  EXPECT_EQ(shown(), running);
  EXPECT_EQ(enabled(), all(false));
  finish();
  EXPECT_EQ(shown(), succeeded);
}

TEST_F(WindowControl, KeepsItsFormerContentsWhenAGoodReplyBreaksOff) {
  open({breakOff(), succeed(), breakOff()});
  runOnce();
  EXPECT_EQ(shown(), failed);
  EXPECT_EQ(shownText(), "");
  runOnce();
  runOnce();
  EXPECT_EQ(shown(), failed);
  EXPECT_EQ(shownText(), "See results at " + resultsUrl);
}

TEST_F(WindowControl, ShowsAnErrorWhenAReplyIsRefusedAfterItsFirstBytes) {
  open({succeed(), support::answer("HTTP/1.1 200 OK\r\n\r\n" + std::string(2'000'000, 'x'))});
  runOnce();
  runOnce();
  EXPECT_EQ(shown(), failed);
  EXPECT_EQ(shownText(), "There was an error submitting the results");
}

TEST_F(WindowControl, SetsTheMessageOfA500AndReplacesItAtOnce) {
  open({failWith("500 Oops"), failWith("502 Oops")});
  std::vector<std::string> texts;
  QObject::connect(results()->document(), &QTextDocument::contentsChanged, results(), [&] {
    if (const std::string text = shownText();
        text != "" && (texts.empty() || texts.back() != text)) {
      texts.push_back(text);
    }
  });
  const std::string general = "There was an error submitting the results";
  runOnce();
  EXPECT_THAT(texts, testing::ElementsAre("There was an internal server errror", general));
  texts.clear();
  runOnce();
  EXPECT_THAT(texts, testing::ElementsAre(general));
}

TEST_F(WindowControl, MovesNothingFromPhaseToPhase) {
  open({succeed(), succeed()});
  const auto places = [this] {
    std::map<std::string, QRect> rectangles;
    for (const char* name : {"account", "ticket", "domain", "start", "progress", "results", "copy",
                             "open", "window"}) {
      const QWidget* widget = std::string(name) == "window" ? window : find(name);
      rectangles[name] = widget->geometry();
    }
    return rectangles;
  };
  pressStart();
  const auto before = places();
  finish();
  EXPECT_EQ(places(), before);
  pressStart();
  EXPECT_EQ(places(), before);
  finish();
  EXPECT_EQ(places(), before);
}

TEST_F(WindowControl, CountsWhatHasFinished) {
  open({succeed()});
  auto* status = find<QLabel>("status");
  const auto* bar = find<QProgressBar>("progress");
  pressStart();
  EXPECT_EQ(bar->minimum(), 0);
  EXPECT_EQ(bar->value(), 0);
  std::vector<std::string> texts;
  support::turnUntil([&] {
    if (texts.empty() || texts.back() != status->text().toStdString()) {
      texts.push_back(status->text().toStdString());
    }
    return find("start")->isEnabled();
  });
  const std::string count = std::to_string(support::countOfGeneralTests());
  EXPECT_EQ(texts.back(), "Please wait. Finished " + count + " out of " + count + " tests.");
  EXPECT_EQ(controller->processes.size(), support::countOfGeneralTests());
}

TEST_F(WindowControl, BeginsToCountAtNothing) {
  open({succeed()});
  controller->line = "while [ ! -e " + home.path("go") + " ]; do :; done";
  pressStart();
  support::turnUntil([&] { return find<QLabel>("status")->text() != QLatin1String(" "); });
  const std::string count = std::to_string(support::countOfGeneralTests());
  EXPECT_EQ(find<QLabel>("status")->text().toStdString(),
            "Please wait. Finished 0 out of " + count + " tests.");
  home.write("go", "");
  finish();
}

TEST_F(WindowControl, TakesAccountTicketAndDomainAtTheStart) {
  std::string request;
  open({[&](const support::ServerConnection& connection) {
    request = connection.readRequest();
    connection.send(support::reply("200 OK", resultsUrl));
  }});
  type("account", QStringLiteral("  acme  "));
  type("ticket", QStringLiteral("123 45"));
  type("domain", QStringLiteral("exam ple.com"));
  pressStart();
  find<QLineEdit>("account")->setText(QStringLiteral("changed"));
  finish();
  run.reset();
  server.reset();
  EXPECT_THAT(request,
              testing::HasSubstr("\r\n\r\nHalvik account: acme\nHalvik ticket: 123 45\n---"));
  EXPECT_THAT(request, testing::Not(testing::HasSubstr("changed")));
}

TEST_F(WindowControl, ADomainAddsItsTests) {
  open({succeed()});
  type("domain", QStringLiteral("word"));
  runOnce();
  EXPECT_EQ(controller->planned.size(), support::countOfGeneralTests());
  controller->planned.clear();
  type("domain", QStringLiteral(".example"));
  runOnce();
  EXPECT_EQ(controller->planned.size(), support::countOfGeneralTests(".example"));
}

TEST_F(WindowControl, AlwaysUploads) {
  open({succeed()});
  controller->isConsole = true;
  controller->outputFile = "";
  runOnce();
  EXPECT_EQ(controller->resultsUrl, resultsUrl);
}

TEST_F(WindowControl, CopiesTheUrl) {
  open({support::answer(support::reply("200 OK", resultsUrl + "\n"))});
  runOnce();
  QTest::mouseClick(find("copy"), Qt::LeftButton);
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), resultsUrl + "\n");
}

TEST_F(WindowControl, OpensTheUrl) {
  open({support::answer(support::reply("200 OK", resultsUrl + "\n"))});
  runOnce();
  EXPECT_EQ(desktop.opened, QStringList());
  QTest::mouseClick(find("open"), Qt::LeftButton);
  EXPECT_EQ(desktop.opened, QStringList(QString::fromStdString(resultsUrl)));
}

// What the window makes of a reply that is no plain address. The buttons act on whatever it is: it
// is the desktop that has to know what may be opened.
TEST_F(WindowControl, TakesAReplyAsItIs) {
  struct Case {
    std::string reply;
    std::vector<std::string> links;
    std::string opened;
  };
  const std::string bidi = "\u202E";
  const std::vector<Case> cases{
      {"javascript:alert(1)", {}, "javascript:alert(1)"},
      {"file:///etc/hostname", {}, "file:///etc/hostname"},
      {"no address", {}, ""},
      {" \t\n", {}, ""},
      {"https://", {"https://"}, "https://"},
      {"https://a/\x1b[2J\x07", {"https://a/\x1b[2J\x07"}, "https://a/%1B[2J%07"},
      {"https://a/" + bidi + "gpj.exe",
       {"https://a/" + bidi + "gpj.exe"},
       "https://a/%E2%80%AEgpj.exe"},
      {"https://a/1\r\nhttps://b/2",
       {"https://a/1", "https://b/2"},
       "https://a/1%0D%0Ahttps://b/2"},
      {"https://a/" + std::string(8'000, 'x'),
       {"https://a/" + std::string(8'000, 'x')},
       "https://a/" + std::string(8'000, 'x')},
      // A clipboard holds the reply to the last byte, a byte order mark included.
      {"\uFEFFhttps://a/1", {"https://a/1"}, "https://a/1"},
      {"\xff", {}, ""},
  };
  std::vector<support::HttpServer::Behaviour> replies;
  replies.reserve(cases.size());
  for (const Case& one : cases) {
    replies.push_back(support::answer(support::reply("200 OK", one.reply)));
  }
  open(replies);
  for (const Case& one : cases) {
    runOnce();
    const std::string& reply = one.reply == "\xff" ? "" : one.reply;
    EXPECT_EQ(controller->resultsUrl, reply);
    EXPECT_EQ(links(), one.links) << reply;
    QTest::mouseClick(find("copy"), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), reply);
    desktop.opened.clear();
    QTest::mouseClick(find("open"), Qt::LeftButton);
    EXPECT_EQ(desktop.opened.join(' ').toStdString(), one.opened) << reply;
  }
}

TEST_F(WindowControl, IsNotHeldUpByAReplyFullOfAddresses) {
  std::vector<std::string> texts;
  std::vector<support::HttpServer::Behaviour> replies;
  for (const char* part :
       {"http://", "https://", "http://a ", "https://a/\n", "http://https://", "x"}) {
    std::string& text = texts.emplace_back("https://a/");
    while (text.size() < 60'000) {
      text += part;
    }
    replies.push_back(support::answer(support::reply("200 OK", text)));
  }
  open(replies);
  for (const std::string& text : texts) {
    runOnce();
    EXPECT_TRUE(text.ends_with(controller->resultsUrl));
    EXPECT_EQ(shown(), succeeded);
  }
  EXPECT_EQ(links(), std::vector<std::string>{texts.back()});
}

TEST_F(WindowControl, HasNothingToCopyOrOpenAfterAFirstRunThatFailed) {
  open({failWith("404 Not Found")});
  runOnce();
  QApplication::clipboard()->setText(QStringLiteral("before"));
  desktop.opened.clear();
  QTest::mouseClick(find("copy"), Qt::LeftButton);
  QTest::mouseClick(find("open"), Qt::LeftButton);
  EXPECT_EQ(QApplication::clipboard()->text(), QString());
  EXPECT_EQ(desktop.opened, QStringList());
}

TEST_F(WindowControl, SavesAndOpensTheReportAfterAFailureOnly) {
  open({succeed(), failWith("500 Oops")});
  controller->line = "echo out";
  const std::string path = home.path("Desktop/diagnostic_results.txt");
  runOnce();
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_THAT(desktop.edited, testing::IsEmpty());
  runOnce();
  EXPECT_EQ(support::contentsOf(path), text::join(controller->results));
  EXPECT_THAT(desktop.edited, testing::ElementsAre(path));
  EXPECT_EQ(desktop.opened, QStringList());
}

TEST_F(WindowControl, RunsTenTimesAndLeavesNothingBehind) {
  open({succeed()});
  controller->line = "echo $$";
  const auto descriptors = [] {
    const std::filesystem::directory_iterator listing("/proc/self/fd");
    return std::distance(begin(listing), end(listing));
  };
  runOnce();
  const auto before = descriptors();
  for (int i = 0; i < 9; ++i) {
    runOnce();
    EXPECT_EQ(shown(), succeeded);
  }
  EXPECT_LE(descriptors(), before + 2);
  EXPECT_EQ(controller->container.size(), 10U);
  for (const auto& process : controller->processes) {
    const std::string result = process->getResult();
    const pid_t pid = std::stoi(result.substr(result.find("stdout:\n") + 8));
    EXPECT_NE(kill(pid, 0), 0);
  }
}

TEST_F(WindowControl, StaysAliveWhileItsCommandsPrint) {
  open({succeed()});
  controller->line = "head -c 10000000 /dev/zero | tr '\\0' x";
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++ticks; });
  timer.start(0);
  runOnce();
  // More than half a gigabyte has passed, in portions after each of which the window could repaint.
  EXPECT_GE(ticks, 20);
  EXPECT_EQ(shown(), succeeded);
}

TEST_F(WindowControl, GivesTheKeyboardBackToWhereItWas) {
  open({succeed()});
  find("ticket")->setFocus();
  // Pressed without the keyboard going there, as by a screen reader.
  find<QPushButton>("start")->click();
  finish();
  support::turnUntil([&] { return window->focusWidget() == find("ticket"); });
}

TEST_F(WindowControl, LeavesTheKeyboardWhereItIsWhenItWasNowhere) {
  open({succeed()});
  while (QWidget* focused = window->focusWidget()) {
    focused->clearFocus();
  }
  find<QPushButton>("start")->click();
  finish();
  EXPECT_EQ(shown(), succeeded);
}

TEST_F(WindowControl, AsksItsCommandsToEndWhenItGoes) {
  open({succeed()});
  const support::TemporaryFolder started;
  const support::TemporaryFolder ended;
  const auto count = [](const support::TemporaryFolder& folder) {
    const std::filesystem::directory_iterator listing(folder.path());
    return std::distance(begin(listing), end(listing));
  };
  // The last thing that a command does is to show that it ended.
  controller->line = "trap ': > " + ended.path("$$") + "; exit' TERM; : > " + started.path("$$") +
                     "; while :; do :; done";
  pressStart();
  const auto all = static_cast<std::ptrdiff_t>(support::countOfGeneralTests());
  while (count(started) < all) {
  }
  run.reset();
  while (count(ended) < all) {
  }
}

}  // namespace
}  // namespace ui
