// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Progress and completion of a run.

#include "app/main_controller.h"
#include "text/log.h"
#include "text/utf8.h"

namespace app {

namespace {

constexpr std::chrono::milliseconds progressInterval{200};

}  // namespace

std::uint32_t MainController::finishedTasksCount() const {
  return processes.finishedCount();
}

bool MainController::didAllTestsFinished() const {
  return finishedTasksCount() == processes.size();
}

void MainController::updateProgress() {
  loop.post([this, controller = std::weak_ptr(lifetime)] {
    if (controller.expired()) {
      return;
    }
    const std::uint32_t done = finishedTasksCount();
    textStatus.send(&ui::Label::setStringValue, "Please wait. Finished " + std::to_string(done) +
                                                    " out of " + std::to_string(processes.size()) +
                                                    " tests.");
    progressIndicator.send(&ui::ProgressBar::setValue, static_cast<int>(done));
  });
}

void MainController::startProgressLine() {
  if (isSilent && text::canShowProgressLine()) {
    progressClock = loop.makeTimer(
        [this, start = std::chrono::steady_clock::now()] { showProgressLine(start); });
    progressClock->start(progressInterval);
  }
}

void MainController::showProgressLine(std::chrono::steady_clock::time_point start) {
  const auto elapsed =
      std::chrono::floor<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
  std::string line = std::to_string(finishedTasksCount()) + " of " +
                     std::to_string(processes.size()) + " tests finished, " +
                     std::to_string(elapsed.count()) + " s; waiting for";
  char separator = ':';
  for (const auto& process : processes) {
    // No terminal is wider.
    if (!process->isFinished() && line.size() < 1000) {
      line += separator + (' ' + process->briefName());
      separator = ',';
    }
  }
  text::showProgressLine(line);
  progressClock->start(progressInterval);
}

void MainController::processTerminatedNotification() {
  updateProgress();
  if (didAllTestsFinished() && !isFinishing) {
    isFinishing = true;
    handleAllTestsFinished();
  }
}

bool MainController::hasOutputFile() const {
  return outputFile && !outputFile->empty();
}

bool MainController::willUpload() const {
  // Without a window, a report that goes nowhere else is uploaded.
  return !isSilent || isInternet || (!isConsole && !hasOutputFile());
}

void MainController::handleAllTestsFinished() {
  progressClock.reset();
  text::eraseProgressLine();
  buildResults();
  isReportAtRisk = true;
  if (isConsole) {
    text::Buffers printed = text::untilNul(results);
    printed.emplace_back("\n");
    didPrint(printed);
  }
  if (hasOutputFile()) {
    isReportInFile = writeToPath(*outputFile);
    didPrint({"outputFile=", *outputFile, "\n"});
  }
  if (willUpload()) {
    submitResults();
  } else {
    endSilentRun(0);
  }
}

}  // namespace app
