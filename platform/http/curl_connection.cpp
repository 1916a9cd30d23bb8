// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The module with libcurl: a request by its multi interface, whose sockets and timer the event loop
// watches.

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/http/curl_transfer.h"
#include "platform/http/http_module.h"

namespace platform {

namespace {

// A reply is a line of text; one that comes byte by byte must end some time.
constexpr int stallsPerReply = 10;
// The time without progress is counted in parts: a program that was stopped (SIGSTOP) finds only
// one of them expired when it goes on, and reads what has arrived before it counts the next.
constexpr int partsPerStall = 10;

class CurlConnection final : public HttpConnection {
 public:
  explicit CurlConnection(HttpContext wanted)
      : context(std::move(wanted)),
        transfer(context.request, context.proxy),
        multi(curl_multi_init()),
        timeout(context.loop.makeTimer([this] { act(CURL_SOCKET_TIMEOUT); })),
        stallClock(context.loop.makeTimer([this] { countStall(); })) {
    setUpCallbacks();
    stallClock->start(context.stallLimit / partsPerStall);
    curl_multi_add_handle(multi, transfer.handle());
  }
  ~CurlConnection() override {
    curl_multi_remove_handle(multi, transfer.handle());
    curl_multi_cleanup(multi);
  }

 private:
  // An exception must not unwind libcurl's frames, so the callbacks are noexcept.
  void setUpCallbacks() {
    curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(
        multi, CURLMOPT_SOCKETFUNCTION,
        +[](CURL*, curl_socket_t socket, int what, void* self, void*) noexcept {
          static_cast<CurlConnection*>(self)->watch(socket, what);
          return 0;
        });
    curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(
        multi, CURLMOPT_TIMERFUNCTION, +[](CURLM*, long delayMs, void* self) noexcept {
          static_cast<CurlConnection*>(self)->setTimeout(delayMs);
          return 0;
        });
  }

  void watch(curl_socket_t socket, int what) {
    using Interest = EventLoop::Interest;
    if (what == CURL_POLL_REMOVE) {
      context.loop.unwatch(socket);
      return;
    }
    const Interest interest = what == CURL_POLL_IN    ? Interest::readable
                              : what == CURL_POLL_OUT ? Interest::writable
                                                      : Interest::both;
    context.loop.watch(socket, interest, [this, socket] { act(socket); });
  }

  void setTimeout(long delayMs) {
    if (delayMs < 0) {
      timeout->stop();
    } else {
      timeout->start(std::chrono::milliseconds(delayMs));
    }
  }

  // Lets libcurl act, then passes on the result, when none of its frames is on the stack.
  void act(curl_socket_t socket) {
    int running = 0;
    curl_multi_socket_action(multi, socket, 0, &running);
    if (const std::string data = transfer.takeBody(); !data.empty()) {
      reportHead();
      context.delegate.connectionDidReceiveData(data);
    }
    int left = 0;
    if (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
      finish(message->data.result);
    }
  }

  void reportHead() {
    if (!std::exchange(isHeadReported, true)) {
      context.delegate.connectionDidReceiveResponse({.statusCode = transfer.status()});
    }
  }

  void finish(CURLcode result) {
    if (!transfer.refusal().empty()) {
      refuse(transfer.refusal());
    } else if (result != CURLE_OK) {
      fail(transfer.error(result));
    } else {
      stop();
      reportHead();
      if (transfer.status() >= CurlTransfer::firstErrorStatus) {
        context.logFailure("server replied: " + transfer.statusText());
      }
      context.delegate.connectionDidFinishLoading();
    }
  }

  void countStall() {
    const auto progress = transfer.progress();
    stalledParts = progress == std::exchange(lastProgress, progress) ? stalledParts + 1 : 1;
    replyParts = transfer.isSent() ? replyParts + 1 : 0;
    if (stalledParts > partsPerStall) {
      fail("nothing has moved for too long");
    } else if (replyParts > partsPerStall * stallsPerReply) {
      refuse("the reply takes too long");
    } else {
      stallClock->start(context.stallLimit / partsPerStall);
    }
  }

  void stop() {
    stallClock->stop();
    curl_multi_remove_handle(multi, transfer.handle());
    timeout->stop();
  }

  void fail(const std::string& reason) {
    stop();
    context.logFailure(reason);
    context.delegate.connectionDidFailWithError();
  }

  void refuse(const std::string& reason) {
    stop();
    context.logFailure(reason);
    context.delegate.connectionDidRefuseReply();
  }

  const HttpContext context;
  CurlTransfer transfer;
  CURLM* multi;
  std::unique_ptr<Timer> timeout;
  std::unique_ptr<Timer> stallClock;
  bool isHeadReported = false;

  decltype(transfer.progress()) lastProgress{};
  int stalledParts = 0;
  int replyParts = 0;
};

}  // namespace

extern "C" HttpConnection* halvikSendHttpRequest(HttpContext& context) {
  static const CURLcode initialized [[maybe_unused]] = curl_global_init(CURL_GLOBAL_DEFAULT);
  return new CurlConnection(std::move(context));
}

}  // namespace platform
