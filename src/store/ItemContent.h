// The content of an entry: a text, which may be very long. A hundred entries of some megabytes each would
// take more memory than all the rest, and hardly any of it is ever looked at; so only a prefix of a long
// content is kept in memory, and the content is loaded from the history when it is asked for.
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace corvatto {

// A value; copying it is cheap. Any thread.
class ItemContent {
public:
    // Gives the complete content; absent when it is no longer in the history, or cannot be read.
    using Loader = std::function<std::optional<QString>()>;

    // The least length of a prefix that is not the complete content, in UTF-16 units.
    static constexpr qsizetype minimumPrefix = 5'000;

    ItemContent() = default;
    ItemContent(QString complete) : m_prefix(std::move(complete)) {} // implicit: any text is a content
    ItemContent(QString prefix, Loader loader) : m_prefix(std::move(prefix)), m_loader(std::move(loader)) {}

    // Whether prefix() is the complete content.
    bool isComplete() const { return !m_loader; }
    const QString& prefix() const { return m_prefix; }

    // The complete content, as it is stored now. Reads a long one from the disk at each call.
    std::optional<QString> load() const { return m_loader ? m_loader() : m_prefix; }

private:
    QString m_prefix;
    Loader m_loader;
};

} // namespace corvatto
