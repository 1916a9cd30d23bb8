// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/process_controller.h"
#include "support/temporary_folder.h"

namespace app {
namespace {

TEST(ReportRun, WithoutAWindowThereIsNoHead) {
  MainController controller(support::application());
  controller.txtHalvikAccount = "old";
  controller.txtTicketNo = "old";
  controller.rememberAccountAndTicketNo();
  EXPECT_EQ(controller.txtHalvikAccount, std::nullopt);
  EXPECT_EQ(controller.txtTicketNo, std::nullopt);
}

TEST(ReportRun, JoinsTheResultsInLaunchOrderWhateverEndsFirst) {
  const support::TemporaryFolder folder;
  MainController controller(support::application());
  controller.isFinishing = true;
  controller.txtHalvikAccount = "acme-office";
  // The first one ends last: it runs until the second one has been collected.
  const std::string fifo = folder.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  controller.startTest("/bin/sh", {"-c", "read line < " + fifo + "; echo first"}, "(first)");
  controller.startTest("/bin/true", {}, "(second)");
  support::turnUntil([&] { return controller.finishedTasksCount() == 1; });
  std::ofstream(fifo) << "go\n";
  support::turnUntil([&] { return controller.didAllTestsFinished(); });
  controller.buildResults();
  const std::string results = platform::join(controller.results.pieces());
  const std::string hyphens(45, '-');
  EXPECT_TRUE(results.starts_with("Halvik account: acme-office\n" + hyphens));
  EXPECT_TRUE(results.ends_with("echo first (first)\nstdout:\nfirst\n\n" + hyphens +
                                "Results for: /bin/true (second)\n"));
}

}  // namespace
}  // namespace app
