// A program that copies: well-behaved, slow, silent, lying or dying, as its options say. It does so on the
// Wayland compositor of its environment if there is one, without a window or the keyboard, and on the X
// server otherwise.
//
//   clipboard_client [--option=number…] TARGET=FILE…    takes the clipboard and offers each FILE's bytes as
//   TARGET
//       --chunk       size in bytes of a chunk; what is larger goes in chunks. 256 KiB unless given
//       --mute        1: answers nothing
//       --trickle     waits that many milliseconds before each chunk
//       --stop-after  sends no more chunks of a transfer than that
//       --die-after   exits when it has sent that many chunks
//       --targets     lists that many other targets before its last
//       --age         takes the clipboard when it has run for that many milliseconds
//       --x           1: on the X server, whatever else there is
//       --stay        1: goes on when somebody else has taken over, with what it has begun to send
//     on X alone
//       --announce    the size that a transfer in chunks is announced with, whatever it is
//
// Prints "owner" when it has taken the clipboard, "request TARGET", "chunk TARGET" and "sent TARGET" as it
// serves others, and ends with "lost" when somebody else takes over.
#include "ClipboardOwner.h"

#include <QCoreApplication>
#include <QFile>
#include <QTimer>

#include <cstdio>

namespace corvatto::test {

QByteArrayList ClipboardOwner::targets() const {
    QByteArrayList all = content().keys();
    for (qint64 i = option("targets"); i > 0; --i) {
        all.insert(all.size() - 1, "application/x-other-" + QByteArray::number(i));
    }
    return all;
}

void ClipboardOwner::say(const QByteArray& line) {
    std::puts(line.constData());
    std::fflush(stdout);
}

void ClipboardOwner::later(qint64 milliseconds, const std::function<void()>& action) {
    QTimer::singleShot(static_cast<int>(milliseconds), action);
}

void ClipboardOwner::lose() {
    say("lost");
    if (option("stay") == 0) {
        std::exit(0);
    }
}

bool ClipboardOwner::sendNextOf(Transfer& transfer,
                                const std::function<void(const QByteArray&)>& write) const {
    const QByteArray chunk = content()[transfer.target].mid(transfer.offset, chunkSize());
    write(chunk);
    transfer.offset += chunk.size();
    ++transfer.chunks;
    say((chunk.isEmpty() ? "sent " : "chunk ") + transfer.target);
    if (transfer.chunks == option("die-after", -1)) {
        std::exit(0);
    }
    return !chunk.isEmpty();
}

} // namespace corvatto::test

int main(int argc, char** argv) {
    using namespace corvatto::test;
    const QCoreApplication application(argc, argv);
    ClipboardOwner::Wishes wishes;
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument = argv[i];
        // The last "=" divides: targets such as text/plain;charset=utf-8 have one of their own.
        const auto equals = argument.lastIndexOf('=');
        if (argument.startsWith("--")) {
            wishes.options[argument.mid(2, equals - 2)] = argument.mid(equals + 1).toLongLong();
        } else {
            QFile file(QString::fromUtf8(argument.mid(equals + 1)));
            file.open(QIODevice::ReadOnly);
            wishes.content[argument.left(equals)] = file.readAll();
        }
    }
    std::unique_ptr<ClipboardOwner> owner;
    QTimer::singleShot(static_cast<int>(wishes.options.value("age")), Qt::PreciseTimer, [&] {
        const bool isX = wishes.options.contains("x") || !qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
        owner = isX ? newXClipboardOwner(wishes) : newWaylandClipboardOwner(wishes);
    });
    return QCoreApplication::exec();
}
