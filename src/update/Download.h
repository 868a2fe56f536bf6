// One GET of a small document, to be awaited with co_await. Each download has a session of its own, without
// proxy, cache, cookies and credentials, and its request says nothing about the user. When the network is
// down, it waits for the network instead of failing, as long as the total time allows.
//
// Only HTTPS with a valid certificate is loaded, or plain HTTP from a loopback address, which no network
// carries; a redirection is followed only to where the download might have started, and never from HTTPS to
// HTTP.
#pragma once

#include "update/FetchError.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <coroutine>
#include <optional>
#include <variant>

namespace corvatto {

// Main thread.
class Download : public QObject {
    Q_OBJECT

public:
    struct Limits {
        std::chrono::milliseconds request{10'000};  // without a byte from the server
        std::chrono::milliseconds resource{20'000}; // in all, waiting for the network included
        std::chrono::milliseconds firstRetry{500};  // before the network is tried again; doubles each time
        qint64 bytes = 1'048'576;                   // of the body; a longer one ends the download at once
    };

    struct Response {
        int status = 0; // HTTP's
        QByteArray body;
    };

    // Starts at once.
    Download(const QUrl& url, const Limits& limits);

    // Ends the download now. The coroutine that awaits it is resumed before this returns, and may delete it.
    void cancel();

    // To be awaited once. Gives the response, whatever its status, or throws a FetchError.
    class Awaiter {
    public:
        explicit Awaiter(Download& download) : m_download(download) {}
        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> awaiting) { m_download.m_awaiting = awaiting; }
        Response await_resume() { return m_download.takeResponse(); }

    private:
        Download& m_download;
    };
    Awaiter response() { return Awaiter(*this); }

private:
    void attempt();
    void noteActivity();
    void read();
    void followRedirection(const QUrl& target);
    void attemptFinished();
    void waitForNetwork(FetchError reason);
    void settle(std::variant<Response, FetchError> outcome);
    void resume();
    Response takeResponse();

    Limits m_limits;
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
    std::optional<std::variant<Response, FetchError>> m_outcome; // absent until settle()
    std::coroutine_handle<> m_awaiting;
};

} // namespace corvatto
