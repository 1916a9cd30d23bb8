// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http/http_connection.h"

#include <dlfcn.h>

#include <utility>

#include "platform/http/desktop_proxy.h"
#include "platform/http/http_module.h"
#include "platform/process/helper_executable.h"
#include "text/log.h"
#include "text/url.h"

namespace platform {

namespace {

HttpModuleFunction* module = nullptr;

// Sends the request once the desktop has been asked for its proxy.
class ProxiedConnection final : public HttpConnection {
 public:
  ProxiedConnection(HttpRequest sent, HttpContext wanted)
      : request(std::move(sent)),
        context(std::move(wanted)),
        query(context.loop, request.url, [this](const std::string& proxy) {
          context.proxy = proxy;
          connection.reset(module(request, context));
        }) {}

 private:
  HttpRequest request;
  HttpContext context;
  DesktopProxyQuery query;
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
  if (!text::isWebUrl(request.url)) {
    logFailure("it is no address of a web server");
    return nullptr;
  }
  const std::string error = loadHttpModule();
  if (!error.empty()) {
    logFailure(error);
    return nullptr;
  }
  return std::make_unique<ProxiedConnection>(std::move(request),
                                             HttpContext{.loop = loop,
                                                         .delegate = delegate,
                                                         .stallLimit = stallLimit,
                                                         .proxy = "",
                                                         .logFailure = logFailure});
}

}  // namespace platform
