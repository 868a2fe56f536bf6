#include "platform/qt/IniDocument.h"

#include <algorithm>
#include <utility>

namespace corvatto {
namespace {

struct Line {
    enum class Kind { Nothing, Section, Setting, Unknown };
    Kind kind;
    QByteArray name, value; // the value as it is written
};

Line parse(const QByteArray& line) {
    const QByteArray trimmed = line.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith(';') || trimmed.startsWith('#')) {
        return {Line::Kind::Nothing, {}, {}};
    }
    if (trimmed.startsWith('[') && trimmed.endsWith(']')) {
        return {Line::Kind::Section, trimmed.mid(1, trimmed.size() - 2).trimmed(), {}};
    }
    const qsizetype equals = trimmed.indexOf('=');
    if (equals <= 0) {
        return {Line::Kind::Unknown, {}, {}};
    }
    return {Line::Kind::Setting, trimmed.left(equals).trimmed(), trimmed.mid(equals + 1).trimmed()};
}

bool isHexadecimal(char character) {
    return QByteArrayLiteral("0123456789abcdefABCDEF").contains(character);
}

QString unescaped(const QByteArray& written) {
    static const QByteArray letters = "abfnrtv", meanings = "\a\b\f\n\r\t\v";
    QString result;
    QByteArray plain; // UTF-8 that is not decoded yet
    for (qsizetype i = 0; i < written.size(); ++i) {
        if (written[i] == '"') {
            continue;
        }
        if (written[i] != '\\' || i + 1 == written.size()) {
            plain += written[i];
            continue;
        }
        const char escaped = written[++i];
        if (escaped == 'x') {
            qsizetype end = i + 1;
            while (end < written.size() && isHexadecimal(written[end])) {
                ++end;
            }
            result += QString::fromUtf8(std::exchange(plain, {}));
            result += QChar(static_cast<char16_t>(written.mid(i + 1, end - i - 1).toUInt(nullptr, 16)));
            i = end - 1;
        } else {
            const qsizetype letter = letters.indexOf(escaped);
            plain += letter < 0 ? escaped : meanings[letter];
        }
    }
    result += QString::fromUtf8(plain);
    // Of QSettings, for which a single @ begins values of other types.
    return result.startsWith(u"@@") ? result.mid(1) : result;
}

// Quoted, unless it is a number or a plain version.
QByteArray escaped(const QString& value) {
    QByteArray result;
    bool needsQuotes = value.isEmpty(), isAfterHexadecimal = false;
    for (const QChar character : value.startsWith(u'@') ? u'@' + value : value) {
        const char16_t code = character.unicode();
        const auto ascii = static_cast<char>(code);
        if (code < 0x20 || code > 0x7E || (isAfterHexadecimal && isHexadecimal(ascii))) {
            result += "\\x" + QByteArray::number(code, 16);
            isAfterHexadecimal = true;
        } else {
            result += code == u'"' || code == u'\\' ? QByteArray("\\") + ascii : QByteArray(1, ascii);
            isAfterHexadecimal = false;
        }
        needsQuotes = needsQuotes || code > 0x7E ||
                      !(character.isLetterOrNumber() || QStringView(u"+-.").contains(character));
    }
    return needsQuotes ? '"' + result + '"' : result;
}

} // namespace

IniDocument::IniDocument(const QByteArray& text) : m_lines(text.split('\n')) {}

IniDocument::Place IniDocument::find(const QString& key) const {
    Place place;
    bool isGeneral = true; // also what stands before the first section
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        static const QByteArray byteOrderMark = "\xEF\xBB\xBF";
        const bool isMarked = i == 0 && m_lines[i].startsWith(byteOrderMark);
        const Line line = parse(isMarked ? m_lines[i].mid(byteOrderMark.size()) : m_lines[i]);
        if (line.kind == Line::Kind::Section) {
            isGeneral = line.name.compare("General", Qt::CaseInsensitive) == 0;
        }
        if (!isGeneral || (line.kind != Line::Kind::Section && line.kind != Line::Kind::Setting)) {
            continue;
        }
        place.insert = i + 1;
        if (line.kind == Line::Kind::Setting && line.name == key.toUtf8()) {
            place.line = i;
        }
    }
    return place;
}

std::optional<QString> IniDocument::value(const QString& key) const {
    const qsizetype line = find(key).line;
    return line < 0 ? std::nullopt : std::optional(unescaped(parse(m_lines[line]).value));
}

void IniDocument::setValue(const QString& key, const QString& value) {
    Place place = find(key);
    QByteArray line = key.toUtf8() + '=' + escaped(value);
    if (m_lines.value(std::max<qsizetype>(place.line, 0)).endsWith('\r')) {
        line += '\r';
    }
    if (place.line >= 0) {
        m_lines[place.line] = line;
        return;
    }
    if (place.insert < 0) {
        place.insert = m_lines.last().isEmpty() ? m_lines.size() - 1 : m_lines.size();
        m_lines.insert(place.insert++, "[General]");
    }
    m_lines.insert(place.insert, line);
    if (!m_lines.last().isEmpty()) {
        m_lines.append(QByteArray()); // the last line ends too
    }
}

bool IniDocument::hasUnknownLines() const {
    return std::any_of(m_lines.begin(), m_lines.end(),
                       [](const QByteArray& line) { return parse(line).kind == Line::Kind::Unknown; });
}

} // namespace corvatto
