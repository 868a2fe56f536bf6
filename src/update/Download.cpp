#include "update/Download.h"

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

// A loopback address in digits: a name could be resolved to anywhere.
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

// What a machine without a network reports. A connection that is refused is none of these: somebody answered.
bool meansNoNetwork(QNetworkReply::NetworkError error) {
    return error == QNetworkReply::HostNotFoundError || error == QNetworkReply::UnknownNetworkError ||
           error == QNetworkReply::TemporaryNetworkFailureError ||
           error == QNetworkReply::NetworkSessionFailedError;
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
    // Uncompressed, so that what arrives is what counts against the limit.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

} // namespace

Download::Download(const QUrl& url, const Limits& limits)
    : m_limits(limits), m_url(url), m_retryDelay(limits.firstRetry),
      m_timeOut(FetchError::loading(FetchError::timedOut)) {
    m_manager.setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    for (QTimer* timer : {&m_silence, &m_retry, &m_whole}) {
        timer->setSingleShot(true);
    }
    connect(&m_silence, &QTimer::timeout, this, [this] { settle(m_timeOut); });
    connect(&m_whole, &QTimer::timeout, this, [this] { settle(m_timeOut); });
    connect(&m_retry, &QTimer::timeout, this, &Download::attempt);
    m_silence.setInterval(m_limits.request);
    m_whole.start(m_limits.resource);

    if (isPermitted(url)) {
        attempt();
    } else {
        settle(FetchError::loading(FetchError::secureConnectionRequired));
    }
}

void Download::attempt() {
    m_reply = m_manager.get(requestFor(m_url));
    // With a limit, what is not read yet stays with the server instead of in memory.
    m_reply->setReadBufferSize(readBufferBytes);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &Download::hear);
    connect(m_reply, &QNetworkReply::readyRead, this, &Download::read);
    connect(m_reply, &QNetworkReply::finished, this, &Download::attemptFinished);
    m_silence.start();
}

void Download::hear() {
    m_silence.start();
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
    hear();
    m_body += m_reply->readAll();
    if (m_body.size() > m_limits.bytes) {
        settle(FetchError::loading(FetchError::dataLengthExceedsMaximum));
    }
}

void Download::attemptFinished() {
    const QNetworkReply::NetworkError error = m_reply->error();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // A status that Qt takes for an error is an answer too.
    if (error == QNetworkReply::NoError || status >= 400) {
        read();
        if (m_outcome) {
            return; // too long
        }
        const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        const bool isRedirection = std::find(redirectionStatuses.begin(), redirectionStatuses.end(),
                                             status) != redirectionStatuses.end();
        if (isRedirection && !target.isEmpty()) {
            followRedirection(m_url.resolved(target));
        } else {
            settle(Response{status, std::exchange(m_body, {})});
        }
    } else if (status == 0 && meansNoNetwork(error)) {
        waitForNetwork(FetchError::loading(error, m_reply->errorString()));
    } else {
        settle(FetchError::loading(error, m_reply->errorString()));
    }
}

void Download::waitForNetwork(FetchError reason) {
    // By trying again: what the system says about reachability depends on a service that is not on every
    // desktop, and asking it would mean to wait for it.
    m_timeOut = std::move(reason); // tells more than that time ran out
    m_silence.stop();
    m_reply->deleteLater();
    m_retry.start(m_retryDelay);
    m_retryDelay = std::min(2 * m_retryDelay, longestRetry);
}

void Download::settle(std::variant<Response, FetchError> outcome) {
    if (m_outcome) {
        return;
    }
    m_outcome = std::move(outcome);
    for (QTimer* timer : {&m_silence, &m_retry, &m_whole}) {
        timer->stop();
    }
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
    // Not now: we may be inside the reply, which must not be deleted there, nor stay while an alert is read.
    QMetaObject::invokeMethod(this, &Download::resume, Qt::QueuedConnection);
}

void Download::cancel() {
    settle(FetchError::loading(FetchError::cancelled));
    resume();
}

void Download::resume() {
    if (m_awaiting) {
        std::exchange(m_awaiting, {}).resume(); // and this may be gone
    }
}

Download::Response Download::takeResponse() {
    if (const FetchError* error = std::get_if<FetchError>(&*m_outcome)) {
        throw FetchError(*error);
    }
    return std::get<Response>(*std::move(m_outcome));
}

} // namespace corvatto
