// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The module with libcurl: a request by its multi interface, whose sockets and time-outs the event
// loop watches. libcurl speaks HTTP and TLS; what a reply may cost and where a redirect may lead is
// decided here.

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "platform/http/http_module.h"

namespace platform {

namespace {

constexpr long redirectsMax = 20;
constexpr std::size_t headBytesMax = 64UL * 1024;
constexpr curl_off_t bodyBytesMax = 1024L * 1024;
constexpr int firstErrorStatus = 400;
// A reply is a line of text; one that comes byte by byte must end some time.
constexpr int stallsPerReply = 10;
// The time without progress is counted in parts: a program that was stopped (SIGSTOP) finds only one
// of them expired when it goes on, and reads what has arrived before it counts the next.
constexpr int partsPerStall = 10;

std::string withoutControls(std::string_view bytes) {
  std::string text;
  std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(text),
               [](char byte) { return byte >= ' ' && byte <= '~'; });
  return text;
}

class CurlConnection final : public HttpConnection {
 public:
  CurlConnection(HttpRequest sent, HttpContext wanted)
      : request(std::move(sent)),
        context(std::move(wanted)),
        multi(curl_multi_init()),
        easy(curl_easy_init()),
        timeout(context.loop.makeTimer([this] { act(CURL_SOCKET_TIMEOUT); })),
        stallClock(context.loop.makeTimer([this] { countStall(); })) {
    setUpRequest();
    setUpPolicy();
    setUpCallbacks();
    stallClock->start(context.stallLimit / partsPerStall);
    curl_multi_add_handle(multi, easy);
  }
  ~CurlConnection() override {
    curl_multi_remove_handle(multi, easy);
    curl_easy_cleanup(easy);
    curl_multi_cleanup(multi);
    curl_slist_free_all(headers);
  }

 private:
  template <class Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(easy, option, value);
  }

  template <class Value>
  Value info(CURLINFO what) const {
    Value value{};
    curl_easy_getinfo(easy, what, &value);
    return value;
  }

  std::optional<std::string> header(const char* name) const {
    curl_header* found = nullptr;
    const CURLHcode result = curl_easy_header(easy, name, 0, CURLH_HEADER, -1, &found);
    return result == CURLHE_OK ? std::optional<std::string>(found->value) : std::nullopt;
  }

  void setUpRequest() {
    set(CURLOPT_URL, request.url.c_str());
    set(CURLOPT_POSTFIELDS, request.body.data());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    set(CURLOPT_USERAGENT, "halvik-diagnostic");
    for (const auto& [name, value] : request.headers) {
      headers = curl_slist_append(headers, (name + ": " + value).c_str());
    }
    // The report is sent without asking first whether it may be.
    headers = curl_slist_append(headers, "Expect:");
    // The reply is a line of text, and a compressed one might unfold to any size.
    headers = curl_slist_append(headers, "Accept-Encoding: identity");
    set(CURLOPT_HTTPHEADER, headers);
  }

  void setUpPolicy() {
    set(CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    set(CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, redirectsMax);
    if (!context.proxy.empty()) {
      set(CURLOPT_PROXY, context.proxy.c_str());
    }
    set(CURLOPT_PROXYAUTH, CURLAUTH_ANY);
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // No time limit of libcurl's but ours.
    set(CURLOPT_CONNECTTIMEOUT_MS, std::numeric_limits<long>::max());
    set(CURLOPT_NOSIGNAL, 1L);
    // A thread that still looks up a name does not hold up the end.
    set(CURLOPT_QUICK_EXIT, 1L);
  }

  // A callback that throws would unwind libcurl's frames, so all of them are noexcept.
  void setUpCallbacks() {
    curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION,
                      +[](CURL*, curl_socket_t socket, int what, void* self, void*) noexcept {
                        static_cast<CurlConnection*>(self)->watch(socket, what);
                        return 0;
                      });
    curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION,
                      +[](CURLM*, long delayMs, void* self) noexcept {
                        static_cast<CurlConnection*>(self)->setTimeout(delayMs);
                        return 0;
                      });
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_HEADERFUNCTION,
        +[](char* bytes, std::size_t /*one*/, std::size_t size, void* self) noexcept {
          return static_cast<CurlConnection*>(self)->readHeader({bytes, size}) ? size : 0;
        });
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_WRITEFUNCTION,
        +[](char* bytes, std::size_t /*one*/, std::size_t size, void* self) noexcept {
          return static_cast<CurlConnection*>(self)->readBody({bytes, size}) ? size : 0;
        });
    set(CURLOPT_ERRORBUFFER, curlError.data());
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

  bool isSent() const {
    return info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T) ==
           static_cast<curl_off_t>(request.body.size());
  }

  bool isPost() const {
    return std::string_view(info<const char*>(CURLINFO_EFFECTIVE_METHOD)) == "POST";
  }

  // Why a reply with this head is of no use; empty if it may be of use.
  std::string problemOfHead() const {
    constexpr long temporaryRedirect = 307;
    const bool asksForReportAgain = status >= temporaryRedirect && header("Location");
    if (header("Content-Encoding").value_or("identity") != "identity") {
      return "no usable reply: it is compressed, which nobody asked for";
    }
    // A server that refuses a report need not read it. No other can know what it says yes to.
    if (status < firstErrorStatus && !asksForReportAgain && isPost() && !isSent()) {
      return "the server answered before it had the whole request";
    }
    return "";
  }

  bool readHeader(std::string_view line) {
    constexpr long firstFinalStatus = 200;
    headBytes += line.size();
    if (headBytes > headBytesMax) {
      refusal = "no usable reply: its head is too long";
    } else if (line.starts_with("HTTP/")) {
      statusLine = line;
    } else if (line == "\r\n" || line == "\n") {
      status = info<long>(CURLINFO_RESPONSE_CODE);
      if (status >= firstFinalStatus) {
        refusal = problemOfHead();
        redirect = status < firstErrorStatus ? header("Location").value_or("") : "";
        // From here on there is no way back to plain http.
        if (std::string_view(info<const char*>(CURLINFO_SCHEME)) == "HTTPS") {
          set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
        }
      }
    }
    return refusal.empty();
  }

  bool readBody(std::string_view bytes) {
    bodyBytes += static_cast<curl_off_t>(bytes.size());
    if (bodyBytes > bodyBytesMax) {
      refusal = "no usable reply: it is longer than 1048576 bytes";
      return false;
    }
    received += bytes;
    return true;
  }

  // Lets libcurl go on, then passes on what has come of it, when none of its frames is active.
  void act(curl_socket_t socket) {
    int running = 0;
    curl_multi_socket_action(multi, socket, 0, &running);
    if (!received.empty()) {
      reportHead();
      context.delegate.connectionDidReceiveData(std::exchange(received, {}));
    }
    int left = 0;
    if (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
      finish(message->data.result);
    }
  }

  void reportHead() {
    if (!isHeadReported) {
      isHeadReported = true;
      context.delegate.connectionDidReceiveResponse({.statusCode = static_cast<int>(status)});
    }
  }

  void finish(CURLcode result) {
    stop();
    if (!refusal.empty()) {
      refuse(refusal);
    } else if (result != CURLE_OK) {
      const bool isRefusedRedirect = result == CURLE_TOO_MANY_REDIRECTS ||
                                     result == CURLE_UNSUPPORTED_PROTOCOL ||
                                     result == CURLE_URL_MALFORMAT;
      const std::string reason =
          curlError.front() == '\0' ? curl_easy_strerror(result) : curlError.data();
      fail(isRefusedRedirect && !redirect.empty()
               ? "the redirect to " + redirect + " is refused: " + reason
               : reason);
    } else {
      reportHead();
      if (status >= firstErrorStatus) {
        context.logFailure("server replied: " + withoutControls(statusLine.substr(statusLine.find(' ') + 1)));
      }
      context.delegate.connectionDidFinishLoading();
    }
  }

  // Progress is what has been sent, what has been received of a body, and each step before that.
  std::array<curl_off_t, 5> progress() const {
    return {info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T), info<curl_off_t>(CURLINFO_SIZE_DOWNLOAD_T),
            info<curl_off_t>(CURLINFO_CONNECT_TIME_T), info<curl_off_t>(CURLINFO_APPCONNECT_TIME_T),
            info<long>(CURLINFO_REDIRECT_COUNT)};
  }

  void countStall() {
    stalledParts = progress() == lastProgress ? stalledParts + 1 : 1;
    lastProgress = progress();
    replyParts = isPost() && !isSent() ? 0 : replyParts + 1;
    if (stalledParts > partsPerStall) {
      stop();
      fail("nothing has moved for too long");
    } else if (replyParts > partsPerStall * stallsPerReply) {
      stop();
      refuse("the reply takes too long");
    } else if (info<curl_off_t>(CURLINFO_SIZE_DOWNLOAD_T) > bodyBytesMax) {
      stop();
      refuse("no usable reply: it is longer than 1048576 bytes");
    } else {
      stallClock->start(context.stallLimit / partsPerStall);
    }
  }

  void stop() {
    stallClock->stop();
    timeout->stop();
    curl_multi_remove_handle(multi, easy);
  }

  void fail(const std::string& reason) {
    context.logFailure(withoutControls(reason));
    context.delegate.connectionDidFailWithError();
  }

  void refuse(const std::string& reason) {
    context.logFailure(reason);
    context.delegate.connectionDidRefuseReply();
  }

  const HttpRequest request;
  const HttpContext context;
  CURLM* multi;
  CURL* easy;
  curl_slist* headers = nullptr;
  std::array<char, CURL_ERROR_SIZE> curlError{};
  std::unique_ptr<Timer> timeout;
  std::unique_ptr<Timer> stallClock;

  std::size_t headBytes = 0;
  curl_off_t bodyBytes = 0;
  std::string statusLine;
  long status = 0;
  bool isHeadReported = false;
  /// Where the last head leads to; empty if it is no redirect.
  std::string redirect;
  /// What has been received of the body since the last event.
  std::string received;
  /// Why the reply is refused; empty as long as it may be of use.
  std::string refusal;

  std::array<curl_off_t, 5> lastProgress{};
  int stalledParts = 0;
  int replyParts = 0;
};

}  // namespace

extern "C" HttpConnection* halvikSendHttpRequest(HttpRequest& request, HttpContext& context) {
  static const CURLcode initialized [[maybe_unused]] = curl_global_init(CURL_GLOBAL_DEFAULT);
  return new CurlConnection(std::move(request), std::move(context));
}

}  // namespace platform
