// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http/curl_transfer.h"

#include <utility>

namespace platform {

namespace {

constexpr long redirectsMax = 20;

std::string withoutControls(std::string text) {
  std::erase_if(text, [](char byte) { return byte < ' ' || byte > '~'; });
  return text;
}

}  // namespace

CurlTransfer::CurlTransfer(const HttpRequest& sent, const std::string& proxy)
    : easy(curl_easy_init()), requestBytes(static_cast<curl_off_t>(sent.body.size())) {
  setUpRequest(sent);
  setUpPolicy(proxy);
  setUpCallbacks();
}

CurlTransfer::~CurlTransfer() {
  curl_easy_cleanup(easy);
  curl_slist_free_all(headers);
}

void CurlTransfer::setUpRequest(const HttpRequest& sent) {
  set(CURLOPT_URL, sent.url.c_str());
  set(CURLOPT_POSTFIELDS, sent.body.data());
  set(CURLOPT_POSTFIELDSIZE_LARGE, requestBytes);
  set(CURLOPT_USERAGENT, "halvik-diagnostic");
  headers = curl_slist_append(headers, ("Content-Type: " + sent.contentType).c_str());
  // No "Expect: 100-continue": the report is sent at once.
  headers = curl_slist_append(headers, "Expect:");
  // The reply is a line of text, and a compressed one might unfold to any size.
  headers = curl_slist_append(headers, "Accept-Encoding: identity");
  set(CURLOPT_HTTPHEADER, headers);
}

void CurlTransfer::setUpPolicy(const std::string& proxy) {
  set(CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
  set(CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, redirectsMax);
  if (!proxy.empty()) {
    set(CURLOPT_PROXY, proxy.c_str());
  }
  set(CURLOPT_PROXYAUTH, CURLAUTH_ANY);
  // Without a name in the proxy's URL, the user's Kerberos ticket counts.
  set(CURLOPT_PROXYUSERPWD, ":");
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(CURLOPT_NOSIGNAL, 1L);
  // A thread that still looks up a name does not hold up the end.
  set(CURLOPT_QUICK_EXIT, 1L);
}

// An exception must not unwind libcurl's frames, so the callbacks are noexcept.
void CurlTransfer::setUpCallbacks() {
  set(CURLOPT_HEADERDATA, this);
  set(
      CURLOPT_HEADERFUNCTION,
      +[](char* bytes, std::size_t /*one*/, std::size_t size, void* self) noexcept {
        return static_cast<CurlTransfer*>(self)->readHeader({bytes, size}) ? size : 0;
      });
  set(CURLOPT_WRITEDATA, this);
  set(
      CURLOPT_WRITEFUNCTION,
      +[](char* bytes, std::size_t /*one*/, std::size_t size, void* self) noexcept {
        static_cast<CurlTransfer*>(self)->received.append(bytes, size);
        return size;
      });
  // The body of a redirect counts as well, which libcurl does not pass on.
  set(CURLOPT_NOPROGRESS, 0L);
  set(CURLOPT_XFERINFODATA, this);
  set(
      CURLOPT_XFERINFOFUNCTION,
      +[](void* self, curl_off_t /*of*/, curl_off_t size, curl_off_t, curl_off_t) noexcept {
        return static_cast<CurlTransfer*>(self)->limitBody(size) ? 0 : 1;
      });
  set(CURLOPT_ERRORBUFFER, curlError.data());
}

// The value of the header `name` at `index`, of all so called in the last head; null behind them.
const char* CurlTransfer::header(const char* name, std::size_t index) const {
  curl_header* found = nullptr;
  const CURLHcode result = curl_easy_header(easy, name, index, CURLH_HEADER, -1, &found);
  return result == CURLHE_OK ? found->value : nullptr;
}

// libcurl unpacks a body that is compressed for its transfer alone, also if nobody asked for it.
bool CurlTransfer::isCompressed(const char* name) const {
  const char* coding = header(name, 0);
  for (std::size_t next = 1; coding != nullptr; ++next) {
    if (curl_strequal(coding, "identity") == 0 && curl_strequal(coding, "chunked") == 0) {
      return true;
    }
    coding = header(name, next);
  }
  return false;
}

bool CurlTransfer::isSent() const {
  const bool isPost = std::string_view(info<const char*>(CURLINFO_EFFECTIVE_METHOD)) == "POST";
  return !isPost || info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T) == requestBytes;
}

std::array<curl_off_t, 5> CurlTransfer::progress() const {
  return {info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T), info<curl_off_t>(CURLINFO_SIZE_DOWNLOAD_T),
          info<curl_off_t>(CURLINFO_CONNECT_TIME_T), info<curl_off_t>(CURLINFO_APPCONNECT_TIME_T),
          info<long>(CURLINFO_REDIRECT_COUNT)};
}

bool CurlTransfer::readHeader(std::string_view line) {
  headBytes += line.size();
  if (headBytes > headBytesMax) {
    reasonOfRefusal = "no usable reply: its head is too long";
  } else if (line.starts_with("HTTP/")) {
    statusLine = line;
  } else if (line == "\r\n" || line == "\n") {
    readEndOfHead();
  }
  return reasonOfRefusal.empty();
}

void CurlTransfer::readEndOfHead() {
  constexpr long firstFinalStatus = 200;
  lastStatus = info<long>(CURLINFO_RESPONSE_CODE);
  if (lastStatus >= firstFinalStatus) {
    const char* target = lastStatus < firstErrorStatus ? header("Location", 0) : nullptr;
    redirect = target == nullptr ? "" : target;
    reasonOfRefusal = problemOfHead();
    // No redirect leads from https to http.
    if (curl_strequal(info<const char*>(CURLINFO_SCHEME), "https") != 0) {
      set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    }
  }
}

// Why a reply with this head is refused; empty if it is not.
std::string CurlTransfer::problemOfHead() const {
  // These two redirects ask for the same request again, perhaps before its end.
  constexpr long temporaryRedirect = 307;
  constexpr long permanentRedirect = 308;
  const bool asksForTheSameAgain =
      lastStatus == temporaryRedirect || lastStatus == permanentRedirect;
  if (isCompressed("Content-Encoding") || isCompressed("Transfer-Encoding")) {
    return "no usable reply: it is compressed, which nobody asked for";
  }
  // Only a server that refuses the report need not read all of it.
  if (lastStatus < firstErrorStatus && !asksForTheSameAgain && !isSent()) {
    return "the server answered before it had the whole request";
  }
  return "";
}

bool CurlTransfer::limitBody(curl_off_t size) {
  if (size > bodyBytesMax) {
    reasonOfRefusal = "no usable reply: it is longer than 1048576 bytes";
  }
  return size <= bodyBytesMax;
}

std::string CurlTransfer::takeBody() {
  return std::exchange(received, {});
}

std::string CurlTransfer::statusText() const {
  return withoutControls(statusLine.substr(statusLine.find(' ') + 1));
}

std::string CurlTransfer::error(CURLcode result) const {
  const std::string reason =
      curlError.front() == '\0' ? curl_easy_strerror(result) : curlError.data();
  const bool isRefusedRedirect =
      !redirect.empty() && (result == CURLE_TOO_MANY_REDIRECTS ||
                            result == CURLE_UNSUPPORTED_PROTOCOL || result == CURLE_URL_MALFORMAT);
  return withoutControls(
      isRefusedRedirect ? "the redirect to " + redirect + " is refused: " + reason : reason);
}

}  // namespace platform
