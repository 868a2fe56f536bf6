// The text of a settings file: gives the values of its section [General], and changes one without touching
// any other line. Reads what QSettings has written; comments begin with ; or #.
#pragma once

#include <QByteArrayList>
#include <QString>

#include <optional>

namespace corvatto {

class IniDocument {
public:
    explicit IniDocument(const QByteArray& text = {});

    // The last value when a key is there more than once. Absent when it is not there.
    std::optional<QString> value(const QString& key) const;

    // Puts a new key behind the last one of the section, which is added when there is none.
    void setValue(const QString& key, const QString& value);

    QByteArray text() const { return m_lines.join('\n'); }

    // Whether some lines are neither settings nor sections nor comments. They are kept.
    bool hasUnknownLines() const;

private:
    struct Place {
        qsizetype line = -1;   // of the key; -1 without it
        qsizetype insert = -1; // where a new key may go; -1 without the section
    };
    Place find(const QString& key) const;

    QByteArrayList m_lines; // without their line feeds
};

} // namespace corvatto
