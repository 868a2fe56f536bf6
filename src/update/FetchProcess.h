// One GET of a small document by a helper process, to be awaited with co_await. The helper keeps the limits;
// for the case that it does not, it is given no more time, and no more is read of it, than they allow.
#pragma once

#include "fetch/FetchLimits.h"
#include "fetch/FetchOutcome.h"

#include <QObject>
#include <QProcess>
#include <QTimer>
#include <QUrl>

#include <coroutine>
#include <optional>

namespace corvatto {

// The program that fetches, corvatto-fetch.
struct FetchHelper {
    QString path;
    QProcessEnvironment environment{QProcessEnvironment::InheritFromParent};
};

// Main thread. Never waits for the helper.
class FetchProcess : public QObject {
    Q_OBJECT

public:
    // For the helper's own start and end, beyond the time that fetching may take.
    static constexpr std::chrono::seconds grace{5};

    // Starts at once.
    FetchProcess(const FetchHelper& helper, const QUrl& url, const FetchLimits& limits = {});
    // Ends the helper.
    ~FetchProcess() override;

    // Ends the fetching now. The coroutine that awaits it is resumed before this returns, and may delete it.
    void cancel();

    // To be awaited once. Gives the response, whatever its status, or throws a FetchError.
    class Awaiter {
    public:
        explicit Awaiter(FetchProcess& process) : m_process(process) {}
        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> awaiting) { m_process.m_awaiting = awaiting; }
        FetchResponse await_resume() { return m_process.takeResponse(); }

    private:
        FetchProcess& m_process;
    };
    Awaiter response() { return Awaiter(*this); }

private:
    void read();
    void ended(int exitCode, QProcess::ExitStatus exitStatus);
    void settle(FetchOutcome outcome);
    void resume();
    FetchResponse takeResponse();

    qint64 m_mostBytes;
    QProcess* m_process; // deleted once it has ended
    QTimer m_guard;
    QByteArray m_answer;
    std::optional<FetchOutcome> m_outcome; // absent until settle()
    std::coroutine_handle<> m_awaiting;
};

} // namespace corvatto
