// The flavours of a clipboard that the history keeps: the list of files, one image, one text, as raw bytes.
//
// It is what a reading collects, what answers the program's own questions, and what is offered to other
// programs.
#pragma once

#include "base/Image.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

namespace corvatto {

// A null array is an absent flavour. Main thread.
struct ClipboardContent {
    QByteArray uriList;          // text/uri-list
    QByteArray gnomeCopiedFiles; // x-special/gnome-copied-files
    bool filesAreCut = false;    // pasting moves them
    QByteArray imageType;        // the MIME type of imageBytes
    QByteArray imageBytes;
    QByteArray textTarget; // the target name that tells how textBytes are encoded
    QByteArray textBytes;
    bool isTextPrepared = false;      // textBytes are valid UTF-8 already,
    bool hadInvalidTextBytes = false; // and were not before

    static ClipboardContent ofText(const QString& text);
    static ClipboardContent ofFileURLs(const QList<QUrl>& urls);
    static ClipboardContent ofImage(const Image& image);

    bool isEmpty() const;

    // The copied files in the order of the list; URLs of other schemes are left out.
    QList<QUrl> fileURLs() const;

    // Decodes a text that is not prepared at each call. Absent when there is none.
    struct Text {
        QByteArray utf8;
        bool hadInvalidBytes; // which are replaced
    };
    std::optional<Text> text() const;

    // Decodes the text for all later calls. Any thread that the content belongs to.
    void prepareText();

    // Whether a person would take both for the same copy: equal files, or without any equal texts, or without
    // any equal images, however they are encoded. Decodes images only where their bytes differ.
    bool isSameCopyAs(const ClipboardContent& other) const;
};

} // namespace corvatto
