// What a clipboard_client does on any desktop: it has content, and hands it out in chunks as its options say.
#pragma once

#include <QByteArray>
#include <QMap>

#include <functional>
#include <memory>

namespace corvatto::test {

class ClipboardOwner {
public:
    struct Wishes {
        QMap<QByteArray, qint64> options;
        QMap<QByteArray, QByteArray> content; // by target
    };

    virtual ~ClipboardOwner() = default;

protected:
    struct Transfer {
        QByteArray target;
        qsizetype offset = 0;
        qint64 chunks = 0;
    };

    explicit ClipboardOwner(Wishes wishes) : m_wishes(std::move(wishes)) {}

    qint64 option(const char* name, qint64 otherwise = 0) const {
        return m_wishes.options.value(name, otherwise);
    }
    const QMap<QByteArray, QByteArray>& content() const { return m_wishes.content; }
    QByteArrayList targets() const; // those of the content, with as many others as wished before the last
    qsizetype chunkSize() const { return option("chunk", 256 << 10); }

    static void say(const QByteArray& line);
    static void later(qint64 milliseconds, const std::function<void()>& action);
    void lose(); // somebody else has taken over
    bool isStopped(const Transfer& transfer) const { return transfer.chunks == option("stop-after", -1); }
    // Has `write` send the next chunk, an empty one at the end. False when no more is to come.
    bool sendNextOf(Transfer& transfer, const std::function<void(const QByteArray&)>& write) const;

private:
    Wishes m_wishes;
};

std::unique_ptr<ClipboardOwner> newXClipboardOwner(const ClipboardOwner::Wishes& wishes);
std::unique_ptr<ClipboardOwner> newWaylandClipboardOwner(const ClipboardOwner::Wishes& wishes);

} // namespace corvatto::test
