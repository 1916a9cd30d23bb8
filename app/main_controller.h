// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The central object of the program, for the main thread only: it owns the run, from the options to
// the delivered report. Each group of its operations is defined in the folder of its subject.

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "diagnostics/plan.h"
#include "diagnostics/process.h"
#include "platform/desktop/desktop.h"
#include "platform/event_loop/event_loop.h"
#include "report/http.h"
#include "text/utf8.h"
#include "ui/controls.h"

namespace app {

/// Carries the runs of one process. Every operation on a control does nothing where the run has no
/// window.
class MainController : public report::HttpProtocol, public diagnostics::CommandStarter {
 public:
  using Text = std::optional<std::string>;

  /// `eventLoop` must outlive the controller; `asked` are the hosts that its runs ask.
  explicit MainController(platform::EventLoop& eventLoop,
                          diagnostics::Endpoints asked = diagnostics::builtInEndpoints());
  virtual ~MainController();

  // State and set-up: app/main_controller.cpp

  /// Sets the five options that a headless run takes from the command line.
  void initArgsWithSilent(bool silent, bool console, bool forceSKV, bool skipSKV, bool internet);
  /// Bytes, unchanged; they count more than the window's field.
  void setDomain(const std::string& text) { domain = text; }
  /// A leading tilde is expanded. Empty means none.
  void setOutputFile(const std::string& path);
  /// Called once, after the options and the outlets are set, before the first run.
  void awakeFromNib();
  /// Always true.
  bool applicationShouldTerminateAfterLastWindowClosed() { return true; }
  /// Does nothing: all that the controller owns goes with it.
  void deallocate() {}

  // The plan of a run: diagnostics/main_controller_plan.cpp

  void runTests();
  /// Launches every command of the plan at once and returns. Throws std::system_error when one
  /// cannot be launched.
  void startTests();
  using CommandStarter::startTest;
  /// Launches one command as the next process of the run.
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const Text& comment) override;

  /// Launches a reader for every entry of the three beacon-log folders.
  void tailBeaconLogs();
  /// Launches a reader for every entry of `folder`, which ends in "/", the oldest entry first.
  void tailBeaconSubfolderLog(const std::string& folder);

  // Progress and completion: diagnostics/main_controller_tracking.cpp

  std::uint32_t finishedTasksCount() const;
  /// Also true when the run has no processes.
  bool didAllTestsFinished() const;
  /// Refreshes the progress display in a later turn of the event loop.
  void updateProgress();
  /// For a run without a window, if there is a terminal.
  void startProgressLine();
  /// At the end of the last process the report is built and delivered, once.
  void processTerminatedNotification();
  /// Builds the report, prints and writes it as the options ask, then uploads it or ends the
  /// process.
  void handleAllTestsFinished();

  // The report and its delivery: report/main_controller_delivery.cpp

  /// Takes account and ticket from the window for the run that begins.
  void rememberAccountAndTicketNo();
  void freeAccountAndTicketNo();
  void buildResults();
  /// Starts the upload of the report, trimmed where it is too large. Always true.
  bool submitResults();
  void onHttpDone(const report::Http& client) override;
  void onHttpError(const report::Http& client) override;
  /// Writes the report to `path`, and returns whether it worked; a failure is logged. In a windowed
  /// run the file is then opened in an editor.
  bool writeToPath(const std::string& path);
  /// Writes the report to where it is kept when it could not be delivered: the Desktop, or else a
  /// private folder among the temporary files.
  void saveToDesktop();

  // The window: ui/main_controller_window.cpp

  void enableUI();
  void disableUI();
  void showProgress();
  void hideProgress();
  /// Replaces what `view` shows by `text`, with every web address in it made a link.
  void setTextView(const ui::Outlet<ui::RichTextView>& view, const std::string& text);
  void hiliteAndActivateURLs(const ui::Outlet<ui::RichTextView>& view);
  void copyToClipBoardLinkButtonPressed();
  void shareButtonPressed();

  // Fields

  diagnostics::ProcessList processes;
  std::vector<diagnostics::ProcessList> container;
  ui::Outlet<ui::Button> buttonStartTests;
  ui::Outlet<ui::TextField> textHalvikAccount;
  ui::Outlet<ui::TextField> textTicketNo;
  ui::Outlet<ui::TextField> textDomainToTest;
  ui::Outlet<ui::ProgressBar> progressIndicator;
  ui::Outlet<ui::Label> textStatus;
  ui::Outlet<ui::Label> textCopyPaste;
  ui::Outlet<ui::ScrollView> textResultsLinkView;
  ui::Outlet<ui::RichTextView> textResultsLink;
  ui::Outlet<ui::Window> window;
  ui::Outlet<ui::Button> copyToClipBoardLink;
  ui::Outlet<ui::Button> shareButton;
  ui::Outlet<platform::Desktop> desktop;
  Text txtHalvikAccount;
  Text txtTicketNo;
  /// Views over `resultsHead` and over what `processes` have captured.
  text::Buffers results;
  std::string resultsUrl;
  Text outputFile;
  bool isSilent = false;
  bool isConsole = false;
  bool forceSkv = false;
  bool skipSkv = false;
  bool isSkv = false;
  bool isFinishing = false;
  bool isInternet = false;
  Text domain;
  std::int32_t tailSize = 0;
  std::int32_t maxPostSize = 0;
  std::unique_ptr<report::Http> http;
  /// How long an upload may make no progress.
  std::chrono::milliseconds stallLimit = report::Http::usualStallLimit;

 private:
  void showProgressLine(std::chrono::steady_clock::time_point start);
  bool hasOutputFile() const;
  /// Whether the report is going to be uploaded.
  bool willUpload() const;
  bool didSaveIn(const std::string& folder);
  /// Prints to standard output, and returns whether it worked. What cannot be printed is lost; the
  /// run ends with the error.
  bool didPrint(const text::Buffers& text);
  /// Ends the process, with `status` if everything could be printed.
  [[noreturn]] void endSilentRun(int status);

  std::string resultsHead;
  /// The report has been built and has not reached anyone yet.
  bool isReportAtRisk = false;
  /// The output file holds it.
  bool isReportInFile = false;
  /// Why something could not be printed; the first one counts.
  std::error_code printProblem;
  /// Rewrites the line of progress; empty where nobody sees one.
  std::unique_ptr<platform::Timer> progressClock;
  platform::EventLoop& loop;
  const diagnostics::Endpoints endpoints;
  /// Expires with the controller: a posted task asks whether the controller still exists.
  const std::shared_ptr<const bool> lifetime = std::make_shared<const bool>(true);
};

}  // namespace app
