// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The report of a run, and its delivery to the submission endpoint or to a file.

#include <cstdlib>
#include <filesystem>

#include "app/main_controller.h"
#include "platform/files/files.h"
#include "report/trim.h"
#include "text/log.h"
#include "text/standard_streams.h"
#include "text/utf8.h"

namespace app {

namespace {

constexpr int internalServerError = 500;
constexpr const char* couldNotSave = "could not save diagnostic_results.txt";

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
  resultsHead = report::headOf(txtHalvikAccount, txtTicketNo);
  results = {resultsHead};
  for (const auto& process : processes) {
    report::addBlock(results, process->resultBlock());
  }
}

bool MainController::submitResults() {
  std::string body = text::join(results, text::Until::firstNul);
  if (body.size() > static_cast<std::size_t>(maxPostSize)) {
    body = report::trimTailData(body, maxPostSize);
  }
  http = std::make_unique<report::Http>(loop, endpoints.submitUrl, body, *this, stallLimit);
  return true;
}

void MainController::onHttpDone(const report::Http& client) {
  resultsUrl = client.reply().value_or(std::string());
  if (!isSilent) {
    enableUI();
    hideProgress();
  }
  setTextView(textResultsLink, "See results at " + resultsUrl);
  textResultsLinkView.send(&ui::ScrollView::setHidden, false);
  textCopyPaste.send(&ui::Label::setHidden, false);
  // If the address cannot be printed, nobody finds the report there.
  isReportAtRisk = isSilent && !didPrint({"url=", text::untilNul(resultsUrl), "\n"});
  if (isSilent) {
    endSilentRun(0);
  }
}

void MainController::onHttpError(const report::Http& client) {
  if (!isSilent) {
    enableUI();
    hideProgress();
  }
  if (!client.didResponseSucceed()) {
    if (client.responseCode() == internalServerError) {
      setTextView(textResultsLink, "There was an internal server errror");
    }
    // Also after a status of 500: the general message is the one that stays.
    setTextView(textResultsLink, "There was an error submitting the results");
  }
  textResultsLinkView.send(&ui::ScrollView::setHidden, false);
  saveToDesktop();
  if (isSilent) {
    text::log("could not send log, saved to Desktop\n");
    endSilentRun(1);
  }
}

bool MainController::didPrint(const text::Buffers& text) {
  const std::error_code problem = text::writeStandardOutput(text);
  if (!printProblem) {
    printProblem = problem;
  }
  return !problem;
}

void MainController::endSilentRun(int status) {
  if (printProblem) {
    isReportAtRisk = isReportAtRisk && !isReportInFile;
    throw std::system_error(printProblem, "cannot write to standard output");
  }
  // A thread that looks up a name may still be at work, and nothing is left to be written.
  std::_Exit(status);
}

bool MainController::writeToPath(const std::string& path) {
  if (!platform::writeAtomically(path, results)) {
    text::log(couldNotSave);
    return false;
  }
  desktop.send(&platform::Desktop::openInTextEditor, path);
  return true;
}

void MainController::saveToDesktop() {
  isReportAtRisk = false;
  const std::string folder = platform::desktopFolder();
  if (folder.empty()) {
    text::log(couldNotSave);
  } else if (didSaveIn(folder)) {
    return;
  }
  // The home folder may be full where the place for temporary files is not.
  const std::string lastResort = platform::temporaryFolder();
  if (!didSaveIn(lastResort)) {
    std::error_code ignored;
    std::filesystem::remove(lastResort, ignored);
  }
}

bool MainController::didSaveIn(const std::string& folder) {
  const std::string path = folder + "/diagnostic_results.txt";
  text::log("saving the report to " + path);
  return writeToPath(path);
}

}  // namespace app
