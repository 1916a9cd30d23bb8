// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One request to libcurl: its options, and what a reply may cost and lead to.

#pragma once

#include <curl/curl.h>

#include <array>
#include <string>
#include <string_view>

#include "platform/http/http_connection.h"

namespace platform {

/// Owns an easy handle, which CurlConnection runs. A reply is refused when its head or body is too
/// long, when it is compressed, and when it came before the whole report was sent.
class CurlTransfer {
 public:
  static constexpr std::size_t headBytesMax = 64UL * 1024;
  static constexpr curl_off_t bodyBytesMax = 1024L * 1024;
  static constexpr int firstErrorStatus = 400;

  /// `sent` must outlive it. `proxy` is a URL, or empty for what the environment says.
  CurlTransfer(const HttpRequest& sent, const std::string& proxy);
  ~CurlTransfer();
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  CURL* handle() const { return easy; }

  /// Why the reply is refused; empty as long as it is not.
  const std::string& refusal() const { return reasonOfRefusal; }
  /// Why the transfer failed, with libcurl's result.
  std::string error(CURLcode result) const;
  /// The status of the last head that is not an interim one.
  int status() const { return static_cast<int>(lastStatus); }
  /// The status and the text behind it, without what a terminal would obey.
  std::string statusText() const;
  /// What has been received of the body since the last call.
  std::string takeBody();

  /// Whether the whole of the last request has been sent.
  bool isSent() const;
  /// Differs from an earlier value if there has been progress: in connecting, in sending, in
  /// receiving a body. A head has to come whole to count.
  std::array<curl_off_t, 5> progress() const;

 private:
  void setUpRequest(const HttpRequest& sent);
  void setUpPolicy(const std::string& proxy);
  void setUpCallbacks();
  bool readHeader(std::string_view line);
  void readEndOfHead();
  std::string problemOfHead() const;
  bool limitBody(curl_off_t size);
  bool isCompressed(const char* name) const;
  const char* header(const char* name, std::size_t index) const;

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

  CURL* easy;
  curl_slist* headers = nullptr;
  std::array<char, CURL_ERROR_SIZE> curlError{};
  curl_off_t requestBytes;
  std::size_t headBytes = 0;
  std::string statusLine;
  long lastStatus = 0;
  /// Where the last head leads to; empty if it is no redirect.
  std::string redirect;
  std::string received;
  std::string reasonOfRefusal;
};

}  // namespace platform
