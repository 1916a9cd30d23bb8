// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/http.h"

#include <utility>

#include "report/multipart.h"
#include "text/log.h"
#include "text/utf8.h"

namespace report {

namespace {

constexpr std::string_view boundary = "0xKhTmLbOuNdArY";
constexpr int firstErrorStatus = 400;

}  // namespace

Http::Http(platform::EventLoop& loop, std::string url, std::string_view data,
           HttpProtocol& receiver, std::chrono::milliseconds stallLimit)
    : serverURL(std::move(url)), delegate(receiver) {
  upload(loop, data, stallLimit);
}

void Http::upload(platform::EventLoop& loop, std::string_view data,
                  std::chrono::milliseconds stallLimit) {
  if (!data.empty()) {
    connection = platform::sendHttpRequest(loop, postRequestWithURL(serverURL, boundary, data),
                                           *this, stallLimit);
  }
  if (!connection) {
    uploadSucceeded(false);
  }
}

void Http::uploadSucceeded(bool ok) {
  if (ok && responseDidSucceed) {
    delegate.onHttpDone(*this);
  } else {
    delegate.onHttpError(*this);
  }
}

void Http::connectionDidReceiveResponse(const platform::HttpResponse& response) {
  httpResponse = response;
}

void Http::connectionDidReceiveData(std::string_view data) {
  replyText = text::isUtf8(data) ? std::optional<std::string>(data) : std::nullopt;
  uploadDidSucceed = true;
  responseDidSucceed = true;
  if (httpResponse) {
    rCode = httpResponse->statusCode;
    responseDidSucceed = rCode < firstErrorStatus;
  }
}

void Http::connectionDidFinishLoading() {
  if (!uploadDidSucceed) {
    text::log("sending to " + serverURL + " failed: the reply is empty");
  }
  uploadSucceeded(uploadDidSucceed);
}

void Http::connectionDidFailWithError() {
  uploadSucceeded(false);
}

void Http::connectionDidRefuseReply() {
  // A refused reply counts as none, unlike the beginning of one that was cut off.
  responseDidSucceed = false;
  uploadSucceeded(false);
}

}  // namespace report
