// Sends content to the programs that paste it, through the descriptors that they have passed.
//
// A program that does not read costs nothing: the bytes are shared with the offer, nothing waits, and after a
// time of silence it gets no more.
#pragma once

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <list>
#include <optional>

namespace corvatto {

// One program that pastes. Main thread.
class OutgoingStream : public QObject {
    Q_OBJECT

public:
    explicit OutgoingStream(FileDescriptor theirs) : m_theirs(std::move(theirs)) {}

    // Sends `bytes`, and closes the stream. Null bytes are a refusal.
    void send(const QByteArray& bytes, std::chrono::milliseconds silenceLimit);

Q_SIGNALS:
    // All is sent, or the other side has gone, or was silent for too long.
    void ended();

private:
    void write();

    FileDescriptor m_theirs;
    QByteArray m_bytes;
    qsizetype m_sent = 0;
    std::optional<QSocketNotifier> m_writable;
    QTimer m_silence;
};

// Main thread.
class OutgoingStreams {
public:
    // A stream that waits for what is to be sent. There is a limit to how many there are at a time, since
    // without descriptors the program could not go on: the oldest one gives way. Kept until it has ended.
    OutgoingStream& open(FileDescriptor theirs);

    std::size_t count() const { return m_streams.size(); }

private:
    std::list<std::unique_ptr<OutgoingStream>> m_streams; // the oldest first
};

} // namespace corvatto
