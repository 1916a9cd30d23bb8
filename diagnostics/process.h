// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One command of a run: started, captured while it runs, and turned into its block of the report.
// Main thread only.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/process/byte_buffer.h"
#include "platform/process/child_process.h"
#include "report/report.h"
#include "text/utf8.h"

namespace diagnostics {

/// Posted by a Process, with itself as the object, after its command has ended and both streams
/// have been read.
inline constexpr std::string_view ProcessTerminatedNotification = "ProcessTerminatedNotification";

/// Runs one command, once, and keeps every byte that it writes to standard output and standard
/// error. Its exit status does not count: what it prints is its result.
class Process {
 public:
  /// `eventLoop` must outlive the process.
  explicit Process(platform::EventLoop& eventLoop) : loop(eventLoop) {}
  ~Process();

  /// Starts the command, named in the report by its path, its arguments and `comment`. Throws
  /// std::system_error when it cannot be started; the process then never finishes.
  void start(const std::string& launchPath, const std::vector<std::string>& args,
             const std::optional<std::string>& comment);

  /// Asks the command to end if it runs.
  void terminate() const;

  bool isFinished() const { return finished; }

  /// The command in short, for people who wait for it: its name, and what it asks for or reads.
  const std::string& briefName() const { return brief; }

  /// This command's block of the report as a new text. Before the end it holds no streams.
  std::string getResult() const;

  /// The same as views, valid as long as the process: the report is joined from these without
  /// copying a block twice.
  report::ResultBlock resultBlock() const;

  /// The end of a command: takes the rest of what it printed and announces it. Throws
  /// std::logic_error when the command is another process's.
  void terminatedNotification(const platform::ChildProcess& ended);

 private:
  void buildDisplayName(const std::string& launchPath, const std::vector<std::string>& args,
                        const std::optional<std::string>& comment);
  void buildBriefName(const std::string& launchPath, const std::vector<std::string>& args);
  void stdOutNotification(std::string_view data);
  void stdErrNotification(std::string_view data);

  std::unique_ptr<platform::ChildProcess> task;
  platform::ByteBuffer stdOutData;
  platform::ByteBuffer stdErrData;
  std::optional<std::string_view> stdOutStr;
  std::optional<std::string_view> stdErrStr;
  std::string displayName;
  std::string brief;
  bool finished = false;

  platform::EventLoop& loop;
  friend class ProcessList;
  /// Counts the finished commands of the list; one is added right before the end is announced.
  std::shared_ptr<std::uint32_t> finishedTally;
};

/// The commands of one run, in launch order; copies share their processes. It counts those that
/// have finished, as it is asked at every end of a command and a run may have thousands.
class ProcessList {
 public:
  ProcessList() { processes.reserve(20); }

  /// Adds `process`, which must not have been started yet.
  void append(std::shared_ptr<Process> process) {
    process->finishedTally = finished;
    processes.push_back(std::move(process));
  }

  std::size_t size() const { return processes.size(); }
  std::uint32_t finishedCount() const { return *finished; }

  auto begin() const { return processes.begin(); }
  auto end() const { return processes.end(); }

 private:
  std::vector<std::shared_ptr<Process>> processes;
  std::shared_ptr<std::uint32_t> finished = std::make_shared<std::uint32_t>(0);
};

}  // namespace diagnostics
