// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/toolkit_http_connection.h"

#include <QNetworkProxyFactory>
#include <QSslSocket>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <vector>

#include "platform/boundary.h"
#include "platform/http_reply_reader.h"
#include "platform/log.h"
#include "platform/toolkit_application.h"

// Not the toolkit's class for whole requests: it takes in what a server sends without a bound,
// takes a reply that breaks off for a whole one, and sends a report up to four times to a server
// that closes without an answer. Its sockets, with TLS and proxies, are all that is needed of it.

namespace platform {

namespace {

constexpr int redirectsMax = 20;
constexpr qint64 readBufferBytes = 64LL * 1024;
constexpr std::size_t writeBufferBytes = 64UL * 1024;
// A reply is a line of text; yet one that comes byte by byte must end some time.
constexpr int stallsPerReply = 10;
// Where one family of addresses leads nowhere, nobody should have to wait until that is certain.
constexpr std::chrono::milliseconds headStart{250};

constexpr int firstErrorStatus = 400;

// These two ask for the same request again; after any other redirect only the page behind it is
// fetched.
constexpr int temporaryRedirect = 307;
constexpr int permanentRedirect = 308;

using Family = QAbstractSocket::NetworkLayerProtocol;

QUrl toUrl(const std::string& text) {
  return {QString::fromStdString(text), QUrl::StrictMode};
}

bool isSecure(const QUrl& url) {
  return url.scheme() == QLatin1String("https");
}

bool isHttp(const QUrl& url) {
  return url.isValid() && !url.host().isEmpty() &&
         (url.scheme() == QLatin1String("http") || isSecure(url));
}

bool asksForTheSameAgain(int status) {
  return status == temporaryRedirect || status == permanentRedirect;
}

bool isRedirect(const HttpReplyHead& head) {
  constexpr int moved = 301;
  constexpr int seeOther = 303;
  return head.location && ((head.statusCode >= moved && head.statusCode <= seeOther) ||
                           asksForTheSameAgain(head.statusCode));
}

QNetworkProxy proxyFor(const QUrl& url) {
  const VitalThread thread;
  const QList<QNetworkProxy> proxies = QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
  return proxies.isEmpty() ? QNetworkProxy(QNetworkProxy::NoProxy) : proxies.first();
}

// Without TLS, a proxy for HTTP is itself sent the request. Through any other proxy there is a way
// that looks like a connection with the server.
bool isServerToAsk(const QNetworkProxy& proxy, const QUrl& url) {
  return !isSecure(url) && (proxy.type() == QNetworkProxy::HttpProxy ||
                            proxy.type() == QNetworkProxy::HttpCachingProxy);
}

QByteArray requestLineTarget(const QUrl& url, bool isForProxy) {
  QUrl target = url.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
  if (target.path().isEmpty()) {
    target.setPath(QStringLiteral("/"));
  }
  return target.toEncoded(isForProxy ? QUrl::FormattingOptions(QUrl::None)
                                     : QUrl::RemoveScheme | QUrl::RemoveAuthority);
}

QByteArray hostField(const QUrl& url) {
  const int port = url.port();
  const QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
  return (host.contains(':') ? '[' + host + ']' : host) +
         (port < 0 ? QByteArray() : ':' + QByteArray::number(port));
}

QByteArray authorizationField(const QNetworkProxy& proxy) {
  return "Basic " + (proxy.user() + ':' + proxy.password()).toUtf8().toBase64();
}

// It may be the server's own words: without what a terminal would obey, or show in another order.
QString withoutControls(QString text) {
  text.removeIf([](QChar character) {
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Other_Format;
  });
  return text;
}

// A time limit, counted in parts. A program that was suspended finds its clocks run out and what
// has arrived meanwhile at the same moment: a suspension takes one part, however long it is, and
// what has arrived is looked at before the next.
class TimeLimit {
 public:
  TimeLimit(std::chrono::milliseconds limit, const std::function<void()>& whenOver) {
    clock.setInterval(limit / partsMax);
    QObject::connect(&clock, &QTimer::timeout, &clock, [this, whenOver] {
      if (++passed == partsMax) {
        stop();
        enter(whenOver);
      }
    });
  }

  void start() {
    passed = 0;
    clock.start();
  }
  void stop() { clock.stop(); }
  bool isRunning() const { return clock.isActive(); }

 private:
  static constexpr int partsMax = 10;

  QTimer clock;
  int passed = 0;
};

class ToolkitHttpConnection final : public HttpConnection {
 public:
  ToolkitHttpConnection(HttpRequest sent, HttpConnectionDelegate& receiver,
                        std::chrono::milliseconds limit)
      : request(std::move(sent)),
        delegate(receiver),
        stall(limit, [this] { fail("nothing has moved for too long"); }),
        late(limit * stallsPerReply, [this] { refuse("the reply takes too long"); }) {
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    patience.setSingleShot(true);
    patience.setInterval(headStart);
    QObject::connect(&patience, &QTimer::timeout, &context,
                     [this] { enter([this] { tryNextFamily(); }); });
    QMetaObject::invokeMethod(
        &context, [this] { enter([this] { begin(toUrl(request.url), true); }); },
        Qt::QueuedConnection);
  }
  ~ToolkitHttpConnection() override { close(); }

 private:
  void begin(const QUrl& next, bool asPost) {
    url = next;
    isPost = asPost;
    proxy = proxyFor(url);
    reader = HttpReplyReader();
    reason.clear();
    const bool isDirect = proxy.type() == QNetworkProxy::NoProxy || isServerToAsk(proxy, url);
    // A proxy looks the name up by itself.
    untried =
        isDirect ? std::vector<Family>{QAbstractSocket::IPv6Protocol, QAbstractSocket::IPv4Protocol}
                 : std::vector<Family>{QAbstractSocket::AnyIPProtocol};
    stall.start();
    tryNextFamily();
  }

  void tryNextFamily() {
    if (untried.empty()) {
      return;
    }
    const Family family = untried.front();
    untried.erase(untried.begin());
    auto* attempt = new QSslSocket(&context);
    attempts.push_back(attempt);
    attempt->setReadBufferSize(readBufferBytes);
    on(attempt, &QSslSocket::connected, [this, attempt] { take(attempt); });
    QObject::connect(attempt, &QSslSocket::errorOccurred, attempt,
                     [this, attempt](QAbstractSocket::SocketError error) {
                       enter([&] { lose(attempt, error); });
                     });
    if (!untried.empty()) {
      patience.start();
    }
    if (isServerToAsk(proxy, url)) {
      attempt->setProxy(QNetworkProxy::NoProxy);
      attempt->connectToHost(proxy.hostName(), proxy.port(), QIODevice::ReadWrite, family);
    } else {
      attempt->setProxy(proxy);
      const int usualPort = isSecure(url) ? 443 : 80;
      attempt->connectToHost(url.host(QUrl::FullyEncoded),
                             static_cast<quint16>(url.port(usualPort)), QIODevice::ReadWrite,
                             family);
    }
  }

  template <class Signal>
  void on(QSslSocket* source, Signal signal, const std::function<void()>& reaction) {
    QObject::connect(source, signal, source, [reaction] { enter(reaction); });
  }

  void lose(QSslSocket* attempt, QAbstractSocket::SocketError error) {
    // That there is no address of one family tells nothing where there is one of the other.
    const bool isUnknown = error == QAbstractSocket::HostNotFoundError;
    if (reason.isEmpty() || !isUnknown) {
      reason = isUnknown ? QStringLiteral("Host %1 not found")
                               .arg(isServerToAsk(proxy, url) ? proxy.hostName() : url.host())
                         : attempt->errorString();
    }
    drop(attempt);
    std::erase(attempts, attempt);
    if (attempts.empty() && untried.empty()) {
      fail(reason);
    } else {
      tryNextFamily();
    }
  }

  static void drop(QSslSocket* attempt) {
    attempt->disconnect();
    attempt->deleteLater();
  }

  // The first connection that stands is the one; what else is being tried is given up.
  void take(QSslSocket* attempt) {
    patience.stop();
    untried.clear();
    std::erase(attempts, attempt);
    for (QSslSocket* other : attempts) {
      drop(other);
    }
    attempts.clear();
    socket = attempt;
    socket->disconnect();
    on(socket, &QSslSocket::encrypted, [this] { send(); });
    on(socket, &QSslSocket::bytesWritten, [this] { sendMore(); });
    on(socket, &QSslSocket::encryptedBytesWritten, [this] { sendMore(); });
    on(socket, &QSslSocket::errorOccurred, [this] { endOfConnection(); });
    on(socket, &QSslSocket::disconnected, [this] { endOfConnection(); });
    stall.start();
    if (isSecure(url)) {
      socket->setPeerVerifyName(url.host(QUrl::FullyEncoded));
      socket->startClientEncryption();
    } else {
      send();
    }
  }

  // Nothing is read before this: what came without TLS would be anybody's word.
  void send() {
    isSending = true;
    on(socket, &QSslSocket::readyRead, [this] { read(); });
    unsent = isPost ? std::string_view(request.body) : std::string_view();
    socket->write(head());
    sendMore();
  }

  QByteArray head() const {
    const bool isForProxy = isServerToAsk(proxy, url);
    std::vector<std::pair<QByteArray, QByteArray>> fields{
        {"Host", hostField(url)},
        {"User-Agent", "halvik-diagnostic"},
        {"Accept", "*/*"},
        // The reply is a line of text, and a compressed one might unfold to any size.
        {"Accept-Encoding", "identity"},
        {"Connection", "close"},
    };
    if (isForProxy && !proxy.user().isEmpty()) {
      fields.emplace_back("Proxy-Authorization", authorizationField(proxy));
    }
    if (isPost) {
      for (const auto& [name, value] : request.headers) {
        fields.emplace_back(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
      }
      fields.emplace_back("Content-Length", QByteArray::number(qulonglong{request.body.size()}));
    }
    QByteArray text = isPost ? "POST " : "GET ";
    text += requestLineTarget(url, isForProxy) + " HTTP/1.1\r\n";
    for (const auto& [name, value] : fields) {
      text += name + ": " + value + "\r\n";
    }
    return text + "\r\n";
  }

  void sendMore() {
    stall.start();
    while (isSending && !unsent.empty() && bytesWaiting() < writeBufferBytes) {
      const std::string_view piece = unsent.substr(0, writeBufferBytes);
      unsent.remove_prefix(piece.size());
      socket->write(piece.data(), static_cast<qint64>(piece.size()));
    }
    if (isSent() && !late.isRunning()) {
      late.start();
    }
  }

  std::size_t bytesWaiting() const {
    return static_cast<std::size_t>(socket->bytesToWrite() + socket->encryptedBytesToWrite());
  }

  bool isSent() const { return isSending && unsent.empty() && bytesWaiting() == 0; }

  void read() {
    const bool knewHead = reader.head().has_value();
    const QByteArray bytes = socket->readAll();
    const std::string data = reader.feed({bytes.data(), static_cast<std::size_t>(bytes.size())});
    if (!knewHead && reader.head()) {
      if (isRedirect(*reader.head())) {
        follow(*reader.head());
        return;
      }
      delegate.connectionDidReceiveResponse({.statusCode = reader.head()->statusCode});
    }
    if (!data.empty()) {
      stall.start();
      delegate.connectionDidReceiveData(data);
    }
    judge();
  }

  void judge() {
    if (!reader.problem().empty()) {
      const QString why = "no usable reply: " + QString::fromStdString(reader.problem());
      reader.isRefused() ? refuse(why) : fail(why);
    } else if (reader.isComplete()) {
      finish(*reader.head());
    }
  }

  // Behind the last bytes, whatever the reason: a server may answer and close without having read
  // all, which the toolkit tells as an error.
  void endOfConnection() {
    const QString why = socket->errorString();
    const bool isClosed = socket->error() == QAbstractSocket::RemoteHostClosedError;
    const QSslSocket* const ended = socket;
    while (socket == ended && isSending && socket->bytesAvailable() > 0) {
      read();
    }
    if (socket == ended && isClosed) {
      reader.end();
      judge();
    }
    if (socket == ended) {
      fail(why);
    }
  }

  void finish(const HttpReplyHead& head) {
    // A server that wants no more of it has refused it; no other can know what it says yes to.
    if (!isSent() && head.statusCode < firstErrorStatus) {
      refuse("the server answered before it had the whole request");
      return;
    }
    if (head.statusCode >= firstErrorStatus) {
      logFailure(QStringLiteral("server replied: %1 %2")
                     .arg(head.statusCode)
                     .arg(QString::fromStdString(head.reason)));
    }
    close();
    delegate.connectionDidFinishLoading();
  }

  void follow(const HttpReplyHead& head) {
    const bool asPost = isPost && asksForTheSameAgain(head.statusCode);
    const QUrl target = url.resolved(QUrl::fromEncoded(QByteArray::fromStdString(*head.location)));
    const bool isLessSecure = isSecure(url) && !isSecure(target);
    if (!reader.problem().empty()) {
      judge();
    } else if (isLessSecure || !isHttp(target) || redirects == redirectsMax) {
      fail("the redirect to " + target.toString() + " is refused");
    } else if (!isSent() && !asPost) {
      fail("the server answered before it had the whole request");
    } else {
      ++redirects;
      close();
      begin(target, asPost);
    }
  }

  void fail(const QString& why) {
    logFailure(why);
    close();
    delegate.connectionDidFailWithError();
  }

  void refuse(const QString& why) {
    logFailure(why);
    close();
    delegate.connectionDidRefuseReply();
  }

  void close() {
    stall.stop();
    late.stop();
    patience.stop();
    if (socket != nullptr) {
      drop(socket);
      socket = nullptr;
    }
    for (QSslSocket* attempt : attempts) {
      drop(attempt);
    }
    attempts.clear();
    untried.clear();
    isSending = false;
  }

  void logFailure(const QString& why) const {
    log("sending to " + request.url + " failed: " + withoutControls(why).toStdString());
  }

  const HttpRequest request;
  HttpConnectionDelegate& delegate;
  int redirects = 0;

  // Of the request that is being made: the first one, or one that a redirect leads to.
  QUrl url;
  bool isPost = true;
  QNetworkProxy proxy;
  std::vector<Family> untried;
  std::vector<QSslSocket*> attempts;
  QString reason;
  /// The connection that stands; none before, and none after the end.
  QSslSocket* socket = nullptr;
  bool isSending = false;
  std::string_view unsent;
  HttpReplyReader reader;

  TimeLimit stall;
  TimeLimit late;
  QTimer patience;
  /// Owns the sockets.
  QObject context;
};

}  // namespace

std::unique_ptr<HttpConnection> sendByToolkit(HttpRequest request, HttpConnectionDelegate& delegate,
                                              std::chrono::milliseconds stallLimit) {
  if (!isHttp(toUrl(request.url))) {
    return nullptr;
  }
  return std::make_unique<ToolkitHttpConnection>(std::move(request), delegate, stallLimit);
}

}  // namespace platform
