// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http/http_connection.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/files/files.h"
#include "platform/http/http_module.h"
#include "platform/process/child_process.h"
#include "platform/process/helper_executable.h"
#include "text/log.h"
#include "text/url.h"

namespace platform {

namespace {

constexpr const char* proxyCommand = "/usr/bin/proxy";
constexpr std::chrono::seconds proxyTimeLimit{5};

HttpModuleFunction* module = nullptr;

bool isProxyInEnvironment() {
  constexpr std::array variables{"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy",
                                 "ALL_PROXY"};
  return std::ranges::any_of(variables,
                             [](const char* name) { return std::getenv(name) != nullptr; });
}

// The command prints the proxies to try, separated by blanks; the first one counts.
std::string firstProxy(std::string_view output) {
  const std::string_view first = output.substr(0, output.find_first_of(" \r\n"));
  return first.starts_with("direct:") ? "" : std::string(first);
}

// Sends the request once libproxy's command has been asked for the desktop's proxy: a child process
// with a time limit, and not libproxy itself, as the scripts and name servers that it may have to
// ask could hold up or crash the program.
class ProxiedConnection final : public HttpConnection {
 public:
  explicit ProxiedConnection(HttpContext wanted)
      : context(std::move(wanted)), limit(context.loop.makeTimer([this] { send(""); })) {
    using std::chrono::milliseconds;
    const bool isAsked = !isProxyInEnvironment() && pathExists(proxyCommand) && canAsk();
    limit->start(isAsked ? milliseconds(proxyTimeLimit) : milliseconds(0));
  }

 private:
  bool canAsk() try {
    constexpr auto stream = ChildProcess::Stream::output;
    command = std::make_unique<ChildProcess>(context.loop, proxyCommand,
                                             std::vector{context.request.url});
    command->waitForData(stream, [this](std::string_view data) { output.append(data); });
    command->launch([this] {
      command->readAvailable(stream, output);
      command->reap();
      send(firstProxy(output.view()));
    });
    return true;
  } catch (const std::system_error& error) {
    // The user's limit of processes, for example: the report may arrive without a proxy.
    text::log(error.what());
    return false;
  }

  void send(const std::string& proxy) {
    limit->stop();
    command.reset();
    context.proxy = proxy;
    connection.reset(module(context));
  }

  HttpContext context;
  std::unique_ptr<Timer> limit;
  std::unique_ptr<ChildProcess> command;
  ByteBuffer output;
  std::unique_ptr<HttpConnection> connection;
};

}  // namespace

std::string loadHttpModule() {
  if (module == nullptr) {
    void* library = dlopen(helperPath(httpModuleName).c_str(), RTLD_NOW | RTLD_LOCAL);
    module = library == nullptr
                 ? nullptr
                 : reinterpret_cast<HttpModuleFunction*>(dlsym(library, httpModuleFunction));
  }
  return module == nullptr ? dlerror() : "";
}

std::unique_ptr<HttpConnection> sendHttpRequest(EventLoop& loop, HttpRequest request,
                                                HttpConnectionDelegate& delegate,
                                                std::chrono::milliseconds stallLimit) {
  const auto logFailure = [url = request.url](const std::string& reason) {
    text::log("sending to " + url + " failed: " + reason);
  };
  const std::string error =
      text::isWebUrl(request.url) ? loadHttpModule() : "it is no address of a web server";
  if (!error.empty()) {
    logFailure(error);
    return nullptr;
  }
  return std::make_unique<ProxiedConnection>(HttpContext{.loop = loop,
                                                         .request = std::move(request),
                                                         .delegate = delegate,
                                                         .stallLimit = stallLimit,
                                                         .proxy = "",
                                                         .logFailure = logFailure});
}

}  // namespace platform
