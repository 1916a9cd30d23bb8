// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http/desktop_proxy.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/files/files.h"
#include "text/log.h"

namespace platform {

namespace {

constexpr const char* proxyCommand = "/usr/bin/proxy";
constexpr std::chrono::seconds timeLimit{5};

bool isSetInEnvironment() {
  constexpr std::array variables{"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy",
                                 "ALL_PROXY"};
  return std::any_of(variables.begin(), variables.end(),
                     [](const char* variable) { return std::getenv(variable) != nullptr; });
}

// The command prints the proxies to try, separated by blanks; the first one counts.
std::string firstProxy(std::string_view output) {
  const std::string_view first = output.substr(0, output.find_first_of(" \r\n"));
  return first.starts_with("direct:") ? "" : std::string(first);
}

}  // namespace

DesktopProxyQuery::DesktopProxyQuery(EventLoop& loop, const std::string& url, Answer answer)
    : whenKnown(std::move(answer)), limit(loop.makeTimer([this] { finish(""); })) {
  if (isSetInEnvironment() || !pathExists(proxyCommand)) {
    limit->start(std::chrono::milliseconds(0));
    return;
  }
  try {
    start(loop, url);
    limit->start(timeLimit);
  } catch (const std::system_error& error) {
    // The user's limit of processes, for example: the report may arrive without a proxy.
    text::log(error.what());
    limit->start(std::chrono::milliseconds(0));
  }
}

void DesktopProxyQuery::start(EventLoop& loop, const std::string& url) {
  using Stream = ChildProcess::Stream;
  command = std::make_unique<ChildProcess>(loop, proxyCommand, std::vector{url});
  command->waitForData(Stream::output, [this] { command->readAvailable(Stream::output, output); });
  command->observeTermination([this] {
    command->readAvailable(Stream::output, output);
    command->reap();
    finish(firstProxy(output.view()));
  });
  command->launch();
}

void DesktopProxyQuery::finish(const std::string& proxy) {
  limit->stop();
  command.reset();
  whenKnown(proxy);
}

}  // namespace platform
