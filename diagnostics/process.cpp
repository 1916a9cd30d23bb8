// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/process.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "text/notification_center.h"

namespace diagnostics {

namespace {

using Stream = platform::ChildProcess::Stream;

std::optional<std::string_view> decode(const platform::ByteBuffer& data) {
  return text::isUtf8(data.view()) ? std::optional(data.view()) : std::nullopt;
}

}  // namespace

Process::~Process() {
  text::NotificationCenter::defaultCenter().forget(this);
}

void Process::start(const std::string& launchPath, const std::vector<std::string>& args,
                    const std::optional<std::string>& comment) {
  buildDisplayName(launchPath, args, comment);
  buildBriefName(launchPath, args);
  task = std::make_unique<platform::ChildProcess>(loop, launchPath, args);
  task->waitForData(Stream::output, [this](std::string_view data) { stdOutNotification(data); });
  task->waitForData(Stream::error, [this](std::string_view data) { stdErrNotification(data); });
  task->launch([this] { terminatedNotification(*task); });
}

void Process::terminate() const {
  if (task) {
    task->terminate();
  }
}

std::string Process::getResult() const {
  text::Buffers result;
  report::addBlock(result, resultBlock());
  return text::join(result);
}

report::ResultBlock Process::resultBlock() const {
  return {.displayName = displayName, .standardOutput = stdOutStr, .standardError = stdErrStr};
}

void Process::buildDisplayName(const std::string& launchPath, const std::vector<std::string>& args,
                               const std::optional<std::string>& comment) {
  std::string name = launchPath;
  for (const std::string& arg : args) {
    name += ' ' + arg;
  }
  if (comment) {
    name += ' ' + *comment;
  }
  // File names and arguments may be any bytes; the report is text.
  displayName = text::toUtf8(name);
}

void Process::buildBriefName(const std::string& launchPath, const std::vector<std::string>& args) {
  brief = launchPath.substr(launchPath.rfind('/') + 1);
  // The first one with a dot is a host, an address or a file; what begins with one of these
  // characters is an option or a server.
  const auto subject = std::ranges::find_if(args, [](const std::string& arg) {
    return arg.find('.') != std::string::npos && arg.find_first_of("-+@") != 0;
  });
  if (subject != args.end()) {
    brief += ' ' + *subject;
  }
}

void Process::stdOutNotification(std::string_view data) {
  if (!finished) {
    stdOutData.append(data);
  }
}

void Process::stdErrNotification(std::string_view data) {
  if (!finished) {
    stdErrData.append(data);
  }
}

void Process::terminatedNotification(const platform::ChildProcess& ended) {
  if (&ended != task.get()) {
    throw std::logic_error("assertion failed in terminatedNotification of Process");
  }
  // First, so that the handlers ignore data that the loop still reports.
  finished = true;
  task->readToEnd(stdOutData, stdErrData);
  stdOutStr = decode(stdOutData);
  stdErrStr = decode(stdErrData);
  if (finishedTally) {
    ++*finishedTally;
  }
  text::NotificationCenter::defaultCenter().post(ProcessTerminatedNotification, this);
}

}  // namespace diagnostics
