// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The upload client: one block of bytes, one outcome. Main thread only.

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/event_loop/event_loop.h"
#include "platform/http/http_connection.h"

namespace report {

class Http;

/// Receives the result of an upload, once for each client.
class HttpProtocol {
 public:
  /// The upload succeeded; the reply is in the client.
  virtual void onHttpDone(const Http& client) = 0;
  /// The upload failed; didResponseSucceed and responseCode of the client have the details.
  virtual void onHttpError(const Http& client) = 0;

 protected:
  ~HttpProtocol() = default;
};

/// Uploads one report as multipart/form-data; used once. It has succeeded when the connection
/// finished, reply data arrived and the status at that moment was below 400.
class Http final : private platform::HttpConnectionDelegate {
 public:
  /// How long an upload may make no progress before it fails.
  static constexpr std::chrono::milliseconds usualStallLimit{60'000};

  /// Starts the upload of `data` to `url`; `loop` and `receiver` must outlive the client. With no
  /// data, or with a URL that nothing can be sent to, `receiver` is called before the constructor
  /// returns, otherwise later, from `loop`.
  Http(platform::EventLoop& loop, std::string url, std::string_view data, HttpProtocol& receiver,
       std::chrono::milliseconds stallLimit = usualStallLimit);

  /// Whether reply data has arrived and the status was below 400. False for a reply that was
  /// refused.
  bool didResponseSucceed() const { return responseDidSucceed; }

  /// The HTTP status as of the last reply data; 0 when none arrived.
  std::int64_t responseCode() const { return rCode; }

  /// The reply data that arrived last; absent when none arrived or when it was not valid UTF-8.
  const std::optional<std::string>& reply() const { return replyText; }

 private:
  void upload(platform::EventLoop& loop, std::string_view data,
              std::chrono::milliseconds stallLimit);
  void uploadSucceeded(bool ok);

  void connectionDidReceiveResponse(const platform::HttpResponse& response) override;
  void connectionDidReceiveData(std::string_view data) override;
  void connectionDidFinishLoading() override;
  void connectionDidFailWithError() override;
  void connectionDidRefuseReply() override;

  std::string serverURL;
  HttpProtocol& delegate;
  std::optional<std::string> replyText;
  bool uploadDidSucceed = false;
  bool responseDidSucceed = false;
  std::optional<platform::HttpResponse> httpResponse;
  std::int64_t rCode = 0;
  std::unique_ptr<platform::HttpConnection> connection;
};

}  // namespace report
