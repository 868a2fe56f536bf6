#include "fetch/network/Download.h"

#include <QHostAddress>
#include <QNetworkProxy>

#include <algorithm>
#include <array>
#include <utility>

namespace corvatto {
namespace {

constexpr int maximumRedirections = 10;
constexpr std::array redirectionStatuses{301, 302, 303, 307, 308};
constexpr qint64 readBufferBytes = 65'536;
constexpr std::chrono::milliseconds longestRetry{4'000};

// Only numeric addresses: a name could resolve to any address.
bool isLoopback(const QUrl& url) {
    return QHostAddress(url.host()).isLoopback();
}

bool isPermitted(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == u"https" || (url.scheme() == u"http" && isLoopback(url)));
}

bool isPermittedRedirection(const QUrl& from, const QUrl& to) {
    return isPermitted(to) && (to.scheme() == u"https" || from.scheme() == u"http");
}

// What a machine without a network reports. A refused connection is not among them: that is an answer.
bool meansNoNetwork(QNetworkReply::NetworkError error) {
    return error == QNetworkReply::HostNotFoundError || error == QNetworkReply::UnknownNetworkError ||
           error == QNetworkReply::TemporaryNetworkFailureError ||
           error == QNetworkReply::NetworkSessionFailedError;
}

FetchError::Code codeFor(QNetworkReply::NetworkError error) {
    switch (error) {
    case QNetworkReply::OperationCanceledError:
        return FetchError::cancelled;
    case QNetworkReply::TimeoutError:
        return FetchError::timedOut;
    case QNetworkReply::HostNotFoundError:
        return FetchError::cannotFindHost;
    case QNetworkReply::ConnectionRefusedError:
        return FetchError::cannotConnectToHost;
    case QNetworkReply::RemoteHostClosedError:
        return FetchError::networkConnectionLost;
    case QNetworkReply::TooManyRedirectsError:
        return FetchError::tooManyRedirects;
    case QNetworkReply::InsecureRedirectError:
        return FetchError::secureConnectionRequired;
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::UnknownNetworkError: // network and host unreachable come as this
        return FetchError::notConnectedToInternet;
    case QNetworkReply::SslHandshakeFailedError:
        return FetchError::secureConnectionFailed;
    default:
        // Errors from this one on are about the response of a server that was reached.
        return error >= QNetworkReply::ContentAccessDenied ? FetchError::badServerResponse
                                                           : FetchError::unknown;
    }
}

FetchError errorOf(const QNetworkReply& reply) {
    const FetchError::Code code = codeFor(reply.error());
    // The network access speaks English; what is known has a text in the language of the interface.
    return FetchError::loading(code, code == FetchError::unknown ? reply.errorString() : QString());
}

QNetworkRequest requestFor(const QUrl& url) {
    QNetworkRequest request(url);
    // Qt's own following ends without an error and without a response when the server closes the connection
    // after redirecting.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setRawHeader("Connection", "close");
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setRawHeader("Accept", "application/json");
    // Without these two, Qt sends the user's language and a browser's name; empty ones count as absent.
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("User-Agent", "Corvatto");
    // Uncompressed, so that what arrives is what counts against the limit.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

} // namespace

Download::Download(const QUrl& url, const FetchLimits& limits, Done done)
    : m_limits(limits), m_done(std::move(done)), m_url(url), m_retryDelay(limits.firstRetry),
      m_timeOut(FetchError::loading(FetchError::timedOut)) {
    m_manager.setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    for (QTimer* timer : {&m_idleTimer, &m_retryTimer, &m_totalTimer}) {
        timer->setSingleShot(true);
    }
    connect(&m_idleTimer, &QTimer::timeout, this, [this] { settle(m_timeOut); });
    connect(&m_totalTimer, &QTimer::timeout, this, [this] { settle(m_timeOut); });
    connect(&m_retryTimer, &QTimer::timeout, this, &Download::attempt);
    m_idleTimer.setInterval(m_limits.request);
    m_totalTimer.start(m_limits.resource);

    if (isPermitted(url)) {
        attempt();
    } else {
        settle(FetchError::loading(FetchError::secureConnectionRequired));
    }
}

void Download::attempt() {
    m_reply = m_manager.get(requestFor(m_url));
    // Limits what is received ahead of reading, so that a large body does not pile up in memory.
    m_reply->setReadBufferSize(readBufferBytes);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &Download::noteActivity);
    connect(m_reply, &QNetworkReply::readyRead, this, &Download::read);
    connect(m_reply, &QNetworkReply::finished, this, &Download::attemptFinished);
    m_idleTimer.start();
}

void Download::noteActivity() {
    m_idleTimer.start();
    m_timeOut = FetchError::loading(FetchError::timedOut);
}

void Download::followRedirection(const QUrl& target) {
    if (!isPermittedRedirection(m_url, target)) {
        settle(FetchError::loading(FetchError::secureConnectionRequired));
    } else if (++m_redirections > maximumRedirections) {
        settle(FetchError::loading(FetchError::tooManyRedirects));
    } else {
        m_url = target;
        m_body.clear();
        m_reply->deleteLater();
        attempt();
    }
}

void Download::read() {
    noteActivity();
    m_body += m_reply->readAll();
    if (m_body.size() > m_limits.bytes) {
        settle(FetchError::loading(FetchError::dataLengthExceedsMaximum));
    }
}

void Download::attemptFinished() {
    const QNetworkReply::NetworkError error = m_reply->error();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // Qt reports some statuses as errors; they are responses all the same.
    if (error == QNetworkReply::NoError || status >= 400) {
        read();
        if (m_isSettled) {
            return; // too long
        }
        const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        const bool isRedirection = std::find(redirectionStatuses.begin(), redirectionStatuses.end(),
                                             status) != redirectionStatuses.end();
        if (isRedirection && !target.isEmpty()) {
            followRedirection(m_url.resolved(target));
        } else {
            settle(FetchResponse{status, std::exchange(m_body, {})});
        }
    } else if (status == 0 && meansNoNetwork(error)) {
        waitForNetwork(errorOf(*m_reply));
    } else {
        settle(errorOf(*m_reply));
    }
}

void Download::waitForNetwork(FetchError reason) {
    // Tries again instead of asking the system for its reachability: that takes a service that not every
    // desktop has, and that may be slow to answer.
    m_timeOut = std::move(reason); // says more than that time ran out
    m_idleTimer.stop();
    m_reply->deleteLater();
    m_retryTimer.start(m_retryDelay);
    m_retryDelay = std::min(2 * m_retryDelay, longestRetry);
}

void Download::settle(FetchOutcome outcome) {
    if (m_isSettled) {
        return;
    }
    m_isSettled = true;
    for (QTimer* timer : {&m_idleTimer, &m_retryTimer, &m_totalTimer}) {
        timer->stop();
    }
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
    // Queued, because this may be called by the reply, or by the constructor.
    QMetaObject::invokeMethod(
        this, [this, outcome = std::move(outcome)] { m_done(outcome); }, Qt::QueuedConnection);
}

} // namespace corvatto
