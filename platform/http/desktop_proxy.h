// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The proxy that the user's desktop is set to, asked of libproxy's command `proxy`. Main thread
// only.

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/event_loop/event_loop.h"
#include "platform/process/child_process.h"

namespace platform {

/// A child process with a time limit, and not libproxy itself: the scripts and name servers that it
/// may have to ask cannot hold up or crash the program.
class DesktopProxyQuery {
 public:
  /// The URL of a proxy; empty for none.
  using Answer = std::function<void(const std::string& proxy)>;

  /// Calls `answer` once, in a later turn of the loop, with the desktop's proxy for `url`. There is
  /// none where a variable of the environment names a proxy, which counts instead, where the
  /// command is not installed or cannot be started, and where it takes too long. Destroying the
  /// query, which must not be done in `answer`, ends it.
  DesktopProxyQuery(EventLoop& loop, const std::string& url, Answer answer);

 private:
  void start(EventLoop& loop, const std::string& url);
  void finish(const std::string& proxy);

  Answer whenKnown;
  std::unique_ptr<Timer> limit;
  std::unique_ptr<ChildProcess> command;
  ByteBuffer output;
};

}  // namespace platform
