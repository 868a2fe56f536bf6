// The content of an entry: a text, which may be very long. A hundred entries of some megabytes each would
// take more memory than all the rest, and nearly none of it is ever looked at; so a long content is held by
// its beginning, and all of it is read from the history when it is asked for.
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace corvatto {

// A value; copying it is cheap. Main thread.
class ItemContent {
public:
    // All of a content; absent when it is in the history no more, or cannot be read.
    using Reader = std::function<std::optional<QString>()>;

    // What the beginning of a content that is not held whole has at least, in UTF-16 units.
    static constexpr qsizetype shortestBeginning = 5'000;

    ItemContent() = default;
    ItemContent(QString whole) : m_beginning(std::move(whole)) {} // any text is a content
    ItemContent(QString beginning, Reader reader)
        : m_beginning(std::move(beginning)), m_reader(std::move(reader)) {}

    bool isHeldWhole() const { return !m_reader; }
    const QString& beginning() const { return m_beginning; } // all of it when it is held whole

    // All of it, as it is stored now. Takes as long as reading it from the disk does.
    std::optional<QString> whole() const { return m_reader ? m_reader() : m_beginning; }

private:
    QString m_beginning;
    Reader m_reader;
};

} // namespace corvatto
