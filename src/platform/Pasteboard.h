// The general clipboard as the history sees it: a counter that moves with every change, and the content of
// the last one.
//
// Reads answer from a snapshot in memory. They never wait for the program that owns the clipboard: an
// implementation collects content as it arrives and lets the counter rise only once the answer is in.
#pragma once

#include "base/Image.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

namespace corvatto {

class Pasteboard {
public:
    enum class ImageType { Tiff, Png };

    Pasteboard() = default;
    virtual ~Pasteboard() = default;
    Pasteboard(const Pasteboard&) = delete;
    Pasteboard& operator=(const Pasteboard&) = delete;

    // Rises by one with each change of the content, another program's or our own. Never falls.
    virtual qint64 changeCount() const = 0;

    // Fired by the implementation after each rise of the count, so that whoever polls it can sleep meanwhile.
    // What it calls neither reads nor writes the clipboard.
    std::function<void()> onChange;

    // The display name, in the user's language, of the application that was in front when the last change was
    // announced; empty when there was none, or it has no name. This program's own only for a copy made in its
    // windows.
    virtual QString sourceApplicationName() const = 0;

    // The copied files in the order of the clipboard; URLs of other schemes are left out. Empty when there
    // are none.
    virtual QList<QUrl> fileURLs() const = 0;

    // The first image in any format that can be decoded. Decoded already for some seconds after a change;
    // later, each call decodes.
    virtual std::optional<Image> image() const = 0;

    // The undecoded bytes of the image flavour, if the clipboard holds one of that type.
    virtual std::optional<QByteArray> imageData(ImageType type) const = 0;

    // The plain text, whole, with any NUL characters in it; the first in UTF-8, which costs nothing where a
    // long text came like that.
    virtual std::optional<QByteArray> utf8String() const = 0;
    virtual std::optional<QString> string() const = 0;

    // Takes the clipboard over and empties it. Each of the writes below replaces what is there as well.
    virtual void clearContents() = 0;
    virtual void setString(const QString& text) = 0;
    virtual void writeFileURLs(const QList<QUrl>& urls) = 0;
    virtual void writeImage(const Image& image) = 0;

    // Before the program ends: asks the desktop's clipboard manager, if there is one, to keep what was
    // written, and calls `done` from the event loop, after two seconds at the latest.
    virtual void handOver(std::function<void()> done) = 0;
};

} // namespace corvatto
