// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http_connection.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>

#include "platform/boundary.h"
#include "platform/log.h"

namespace platform {

namespace {

QUrl toUrl(const std::string& text) {
  return {QString::fromStdString(text), QUrl::StrictMode};
}

QNetworkRequest toRequest(const HttpRequest& request, std::chrono::milliseconds stallLimit) {
  QNetworkRequest result(toUrl(request.url));
  for (const auto& [name, value] : request.headers) {
    result.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
  }
  result.setTransferTimeout(static_cast<int>(stallLimit.count()));
  // One single POST gains nothing from HTTP/2.
  result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  return result;
}

int statusOf(const QNetworkReply& reply) {
  return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// The toolkit reports two kinds of things as errors: failed transfers, and complete replies with a
// status of 400 or above, which it maps to the codes below.
bool isCompleteReply(const QNetworkReply& reply) {
  const QNetworkReply::NetworkError error = reply.error();
  const bool isForStatus =
      (error >= QNetworkReply::ContentAccessDenied &&
       error <= QNetworkReply::UnknownContentError) ||
      (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError) ||
      error == QNetworkReply::ProtocolInvalidOperationError;
  return error == QNetworkReply::NoError || (isForStatus && statusOf(reply) >= 400);
}

}  // namespace

class HttpConnection::Parts {
 public:
  Parts(HttpRequest sent, HttpConnectionDelegate& receiver, std::chrono::milliseconds stallLimit)
      : request(std::move(sent)),
        delegate(receiver),
        reply(manager.post(toRequest(request, stallLimit),
                           QByteArray::fromRawData(request.body.data(),
                                                   static_cast<qsizetype>(request.body.size())))) {
    QObject::connect(reply, &QNetworkReply::metaDataChanged, &manager, [this] {
      enter([this] { delegate.connectionDidReceiveResponse({.statusCode = statusOf(*reply)}); });
    });
    QObject::connect(reply, &QNetworkReply::readyRead, &manager,
                     [this] { enter([this] { pass(); }); });
    QObject::connect(reply, &QNetworkReply::finished, &manager,
                     [this] { enter([this] { end(); }); });
  }

 private:
  void pass() {
    const QByteArray data = reply->readAll();
    if (!data.isEmpty()) {
      delegate.connectionDidReceiveData({data.data(), static_cast<std::size_t>(data.size())});
    }
  }

  void end() {
    if (reply->error() != QNetworkReply::NoError) {
      log("sending to " + request.url + " failed: " + reply->errorString().toStdString());
    }
    if (isCompleteReply(*reply)) {
      delegate.connectionDidFinishLoading();
    } else {
      delegate.connectionDidFailWithError();
    }
  }

  const HttpRequest request;
  HttpConnectionDelegate& delegate;
  QNetworkAccessManager manager;
  QNetworkReply* reply;
};

bool isHttpUrl(const std::string& url) {
  const QUrl parsed = toUrl(url);
  const QString scheme = parsed.scheme();
  return parsed.isValid() && !parsed.host().isEmpty() &&
         (scheme == QLatin1String("http") || scheme == QLatin1String("https"));
}

std::string hostOfUrl(const std::string& url) {
  return toUrl(url).host().toStdString();
}

HttpConnection::HttpConnection(HttpRequest request, HttpConnectionDelegate& delegate,
                               std::chrono::milliseconds stallLimit)
    : parts(std::make_unique<Parts>(std::move(request), delegate, stallLimit)) {}

HttpConnection::~HttpConnection() = default;

}  // namespace platform
