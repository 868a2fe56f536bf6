// The flavours of a clipboard that the history keeps: the list of files, one image, one text, as raw bytes.
//
// It is what a read collects, what answers the program's own questions, and what is offered to other
// programs.
#pragma once

#include "base/Image.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

namespace corvatto {

struct ClipboardContent {
    // A null array is an absent flavour.
    QByteArray uriList;          // text/uri-list
    QByteArray gnomeCopiedFiles; // x-special/gnome-copied-files
    QByteArray imageType;        // the MIME type of imageBytes
    QByteArray imageBytes;
    QByteArray textTarget; // the target name that tells how textBytes are encoded
    QByteArray textBytes;

    static ClipboardContent ofText(const QString& text);
    static ClipboardContent ofFileURLs(const QList<QUrl>& urls);
    static ClipboardContent ofImage(const Image& image);

    bool isEmpty() const;
};

} // namespace corvatto
