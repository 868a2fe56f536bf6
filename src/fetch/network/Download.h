// One GET of a small document. Each download has a session of its own, without proxy, cache, cookies and
// credentials, and its request says nothing about the user. When the network is down, it waits for the
// network instead of failing, as long as the total time allows.
//
// Only HTTPS with a valid certificate is loaded, or plain HTTP from a loopback address, which no network
// carries; a redirection is followed only to where the download might have started, and never from HTTPS to
// HTTP.
#pragma once

#include "fetch/FetchLimits.h"
#include "fetch/FetchOutcome.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>

namespace corvatto {

// Main thread.
class Download : public QObject {
    Q_OBJECT

public:
    // Called once, from the event loop: with the response, whatever its status, or with why there is none.
    using Done = std::function<void(const FetchOutcome& outcome)>;

    // Starts at once.
    Download(const QUrl& url, const FetchLimits& limits, Done done);

private:
    void attempt();
    void noteActivity();
    void read();
    void followRedirection(const QUrl& target);
    void attemptFinished();
    void waitForNetwork(FetchError reason);
    void settle(FetchOutcome outcome);

    FetchLimits m_limits;
    Done m_done;
    QUrl m_url; // where redirections have led so far
    int m_redirections = 0;
    std::chrono::milliseconds m_retryDelay;
    QNetworkAccessManager m_manager;
    QPointer<QNetworkReply> m_reply; // the manager's
    QTimer m_idleTimer;
    QTimer m_retryTimer;
    QTimer m_totalTimer;
    FetchError m_timeOut; // the error if time runs out now
    QByteArray m_body;
    bool m_isSettled = false;
};

} // namespace corvatto
