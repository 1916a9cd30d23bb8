// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http_connection.h"

#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>

#include "platform/boundary.h"
#include "platform/log.h"

namespace platform {

namespace {

constexpr int redirectsMax = 20;
constexpr qint64 readBufferBytes = 1 << 20;

// A program that was stopped for long finds its clocks run out and what has arrived meanwhile at
// the same moment. The limit on standing still is therefore counted in parts, of which a stop takes
// one, however long it is. The toolkit's own limit would give up at once.
constexpr int partsOfStallLimit = 10;

// These two ask for the same request again; after any other redirect only the page behind it is
// fetched.
constexpr int temporaryRedirect = 307;
constexpr int permanentRedirect = 308;

QUrl toUrl(const std::string& text) {
  return {QString::fromStdString(text), QUrl::StrictMode};
}

bool isHttp(const QUrl& url) {
  const QString scheme = url.scheme();
  return url.isValid() && !url.host().isEmpty() &&
         (scheme == QLatin1String("http") || scheme == QLatin1String("https"));
}

// Where a reply sends its reader on to; invalid when it does not.
QUrl redirectionTarget(const QNetworkReply& reply) {
  const QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
  return target.isEmpty() ? QUrl() : reply.url().resolved(target);
}

int statusOf(const QNetworkReply& reply) {
  return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// Whether fewer bytes came than the head had promised. The toolkit does not always notice when a
// connection breaks off behind the first piece. What it has decompressed says nothing about the
// bytes that came.
bool isCutShort(const QNetworkReply& reply, qint64 received) {
  const QVariant promised = reply.header(QNetworkRequest::ContentLengthHeader);
  return promised.isValid() && !reply.hasRawHeader("Content-Encoding") &&
         received < promised.toLongLong();
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
  Parts(HttpRequest sent, HttpConnectionDelegate& receiver, std::chrono::milliseconds limit)
      : request(std::move(sent)), delegate(receiver), stallLimit(limit) {
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    QObject::connect(&clock, &QTimer::timeout, &manager,
                     [this] { enter([this] { countPart(); }); });
    QNetworkRequest first = requestTo(toUrl(request.url));
    for (const auto& [name, value] : request.headers) {
      first.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }
    post(first);
  }

 private:
  QNetworkRequest requestTo(const QUrl& url) const {
    QNetworkRequest result(url);
    result.setAttribute(QNetworkRequest::EmitAllUploadProgressSignalsAttribute, true);
    // One single POST gains nothing from HTTP/2.
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // The toolkit would follow redirects itself, but without a time limit and without the body of
    // one that leads nowhere.
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                        QNetworkRequest::ManualRedirectPolicy);
    return result;
  }

  void post(const QNetworkRequest& next) {
    const auto size = static_cast<qsizetype>(request.body.size());
    await(manager.post(next, QByteArray::fromRawData(request.body.data(), size)));
  }

  void await(QNetworkReply* next) {
    reply = next;
    received = 0;
    quietParts = 0;
    clock.start(stallLimit / partsOfStallLimit);
    // Only the last piece of a reply counts: an endless one must not fill the memory.
    reply->setReadBufferSize(readBufferBytes);
    QObject::connect(reply, &QNetworkReply::uploadProgress, &manager, [this] { quietParts = 0; });
    QObject::connect(reply, &QNetworkReply::metaDataChanged, &manager,
                     [this] { enter([this] { passHead(); }); });
    QObject::connect(reply, &QNetworkReply::readyRead, &manager,
                     [this] { enter([this] { passData(); }); });
    QObject::connect(reply, &QNetworkReply::finished, &manager,
                     [this] { enter([this] { end(); }); });
  }

  void countPart() {
    if (++quietParts == partsOfStallLimit) {
      reply->abort();
    }
  }

  void passHead() {
    quietParts = 0;
    if (!redirectionTarget(*reply).isValid()) {
      delegate.connectionDidReceiveResponse({.statusCode = statusOf(*reply)});
    }
  }

  void passData() {
    quietParts = 0;
    const QByteArray data = reply->readAll();
    received += data.size();
    if (!data.isEmpty() && !redirectionTarget(*reply).isValid()) {
      delegate.connectionDidReceiveData({data.data(), static_cast<std::size_t>(data.size())});
    }
  }

  void end() {
    clock.stop();
    if (reply->error() != QNetworkReply::NoError) {
      logFailure(reply->errorString());
    }
    if (!isCompleteReply(*reply)) {
      delegate.connectionDidFailWithError();
    } else if (isCutShort(*reply, received)) {
      logFailure(QStringLiteral("the reply breaks off"));
      delegate.connectionDidFailWithError();
    } else if (const QUrl target = redirectionTarget(*reply); target.isValid()) {
      follow(target);
    } else {
      delegate.connectionDidFinishLoading();
    }
  }

  void follow(const QUrl& target) {
    const bool isLessSecure = reply->url().scheme() == QLatin1String("https") &&
                              target.scheme() != QLatin1String("https");
    if (isLessSecure || !isHttp(target) || redirects == redirectsMax) {
      logFailure(QStringLiteral("the redirect to %1 is refused").arg(target.toString()));
      delegate.connectionDidFailWithError();
      return;
    }
    ++redirects;
    const int status = statusOf(*reply);
    reply->deleteLater();
    if (status == temporaryRedirect || status == permanentRedirect) {
      QNetworkRequest again = reply->request();
      again.setUrl(target);
      post(again);
    } else {
      await(manager.get(requestTo(target)));
    }
  }

  // The reason may be the server's own words: without what a terminal would obey.
  void logFailure(QString reason) const {
    reason.removeIf([](QChar character) { return character.category() == QChar::Other_Control; });
    log("sending to " + request.url + " failed: " + reason.toStdString());
  }

  const HttpRequest request;
  HttpConnectionDelegate& delegate;
  const std::chrono::milliseconds stallLimit;
  QTimer clock;
  int quietParts = 0;
  QNetworkAccessManager manager;
  QNetworkReply* reply = nullptr;
  qint64 received = 0;
  int redirects = 0;
};

bool isHttpUrl(const std::string& url) {
  return isHttp(toUrl(url));
}

std::string hostOfUrl(const std::string& url) {
  return toUrl(url).host().toStdString();
}

HttpConnection::HttpConnection(HttpRequest request, HttpConnectionDelegate& delegate,
                               std::chrono::milliseconds stallLimit)
    : parts(std::make_unique<Parts>(std::move(request), delegate, stallLimit)) {}

HttpConnection::~HttpConnection() = default;

}  // namespace platform
