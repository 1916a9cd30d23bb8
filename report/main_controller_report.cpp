// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The report of a run: whom it is from, and what its commands printed.

#include "app/main_controller.h"
#include "report/report.h"
#include "text/utf8.h"

namespace app {

namespace {

MainController::Text typedText(const ui::Outlet<ui::TextField>& field) {
  const std::string text =
      text::trimSpaces(field.ask(&ui::TextField::stringValue).value_or(std::string()));
  return text.empty() ? std::nullopt : MainController::Text(text);
}

}  // namespace

void MainController::rememberAccountAndTicketNo() {
  freeAccountAndTicketNo();
  txtHalvikAccount = typedText(textHalvikAccount);
  txtTicketNo = typedText(textTicketNo);
}

void MainController::freeAccountAndTicketNo() {
  txtHalvikAccount.reset();
  txtTicketNo.reset();
}

void MainController::buildResults() {
  std::vector<report::ResultBlock> blocks;
  blocks.reserve(processes.size());
  for (const auto& process : processes) {
    blocks.push_back(process->resultBlock());
  }
  results = report::Report(txtHalvikAccount, txtTicketNo, blocks);
}

}  // namespace app
