// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/fake_controls.h"
#include "support/process_controller.h"
#include "support/temporary_folder.h"
#include "support/white_space.h"

namespace app {
namespace {

TEST(ReportRun, WithoutAWindowThereIsNoHead) {
  MainController controller(support::eventLoop());
  controller.txtHalvikAccount = "old";
  controller.txtTicketNo = "old";
  controller.rememberAccountAndTicketNo();
  EXPECT_EQ(controller.txtHalvikAccount, std::nullopt);
  EXPECT_EQ(controller.txtTicketNo, std::nullopt);
}

TEST(ReportRun, ForgetsWhomItWasFrom) {
  MainController controller(support::eventLoop());
  controller.txtHalvikAccount = "old";
  controller.txtTicketNo = "old";
  controller.freeAccountAndTicketNo();
  EXPECT_EQ(controller.txtHalvikAccount, std::nullopt);
  EXPECT_EQ(controller.txtTicketNo, std::nullopt);
}

// What is remembered of a text that is typed as the account, and as the ticket.
std::vector<MainController::Text> remembered(const std::string& typed) {
  MainController controller(support::eventLoop());
  support::FakeWindow window(controller);
  controller.txtHalvikAccount = "old";
  controller.txtTicketNo = "old";
  window.account.text = typed;
  window.ticket.text = "the ticket";
  controller.rememberAccountAndTicketNo();
  EXPECT_EQ(controller.txtTicketNo, "the ticket");
  const MainController::Text account = controller.txtHalvikAccount;
  window.account.text = "the account";
  window.ticket.text = typed;
  controller.rememberAccountAndTicketNo();
  EXPECT_EQ(controller.txtHalvikAccount, "the account");
  return {account, controller.txtTicketNo};
}

std::vector<MainController::Text> both(const MainController::Text& text) {
  return {text, text};
}

TEST(ReportRun, TrimsAccountAndTicket) {
  EXPECT_EQ(remembered(""), both(std::nullopt));
  EXPECT_EQ(remembered("  acme  "), both("acme"));
  EXPECT_EQ(remembered(" \t\u2003 "), both(std::nullopt));
  for (const support::WhiteSpace& space : support::whiteSpaces) {
    const std::string blank = space.utf8;
    const std::string typed = blank + blank + "a" + blank + "b" + blank + blank;
    if (space.isTrimmed) {
      EXPECT_EQ(remembered(typed), both("a" + blank + "b")) << std::hex << +space.unit;
      EXPECT_EQ(remembered(blank), both(std::nullopt)) << std::hex << +space.unit;
    } else {
      EXPECT_EQ(remembered(typed), both(typed)) << std::hex << +space.unit;
      EXPECT_EQ(remembered(blank), both(blank)) << std::hex << +space.unit;
    }
  }
  for (const support::Character& character : support::noWhiteSpaces) {
    EXPECT_EQ(remembered(character.utf8), both(character.utf8)) << std::hex << +character.unit;
  }
}

TEST(ReportRun, JoinsTheResultsInLaunchOrderWhateverEndsFirst) {
  const support::TemporaryFolder folder;
  MainController controller(support::eventLoop());
  controller.isFinishing = true;
  controller.txtHalvikAccount = "acme-office";
  // The first one ends last: it runs until the second one has been reaped.
  const std::string fifo = folder.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  controller.startTest("/bin/sh", {"-c", "read line < " + fifo + "; echo first"}, "(first)");
  controller.startTest("/bin/true", {}, "(second)");
  support::turnUntil([&] { return controller.finishedTasksCount() == 1; });
  std::ofstream(fifo) << "go\n";
  support::turnUntil([&] { return controller.didAllTestsFinished(); });
  controller.buildResults();
  const std::string results = text::join(controller.results);
  const std::string hyphens(45, '-');
  EXPECT_TRUE(results.starts_with("Halvik account: acme-office\n" + hyphens));
  EXPECT_TRUE(results.ends_with("echo first (first)\nstdout:\nfirst\n\n" + hyphens +
                                "Results for: /bin/true (second)\n"));
}

}  // namespace
}  // namespace app
