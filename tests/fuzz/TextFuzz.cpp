// The name of a text flavour and the bytes under it, parted by a NUL; and what a card makes of the text.
#include "Fuzz.h"
#include "base/Graphemes.h"
#include "base/TextDecoding.h"
#include "history/TextExcerpt.h"

#include <QImage>

using namespace corvatto;

namespace {

void run(const QByteArray& input) {
    const qsizetype end = input.indexOf('\0');
    const QByteArray target = end < 0 ? QByteArray() : input.first(end);
    if (!textFlavourRank(target)) {
        return;
    }
    const QByteArray bytes = input.sliced(end + 1);
    const auto [text, hadInvalidBytes] = decodeText(target, bytes);
    fuzz::require(target != "UTF8_STRING" || hadInvalidBytes || text.toUtf8() == bytes);
    // What was wrong has become replacement characters, and no longer grows or breaks.
    fuzz::require(QString::fromUtf8(text.toUtf8()) == text);

    const qsizetype count = graphemeCount(text);
    for (const qsizetype wanted : {qsizetype{0}, qsizetype{1}, qsizetype{40}, count, count + 1}) {
        const QStringView prefix = graphemePrefix(text, wanted);
        fuzz::require(text.startsWith(prefix) && graphemeCount(prefix) == std::min(wanted, count));
    }
    static QImage card(200, 100, QImage::Format_RGB32);
    QPainter painter(&card);
    QFont font;
    font.setPixelSize(13);
    for (const auto alignment : {Qt::AlignLeft, Qt::AlignHCenter}) {
        const TextExcerpt excerpt{font, Qt::black, 4, 2, alignment};
        fuzz::require(excerpt.draw(painter, card.rect(), text) <= card.height());
    }
}

} // namespace

fuzz::Target fuzz::text() {
    using namespace std::string_literals;
    QList<QByteArray> seeds;
    for (
        const std::string& seed :
        {"UTF8_STRING\0plain\r\n\t文字 👨‍👩‍👧 e\xCC\x81 \xF0\x9F\x87\xA8\xF0\x9F\x87\xB3"s,
         "STRING\0caf\xE9"s, "text/plain\0\xFF\xFE\x61"s,
         "UTF8_STRING\0\xD7\x90\xE2\x80\xAE abc \xE2\x81\xA6\xD8\xA7\xE2\x81\xA9 \xE0\xA4\x95\xE0\xA5\x8D\xE0\xA4\xB7"s}) {
        seeds.append(QByteArray::fromStdString(seed));
    }
    for (const char* charset : {"utf-8", "\"UTF-16\"", "utf-32", "utf-7", "gb18030", "big5", "shift_jis",
                                "euc-kr", "iso-2022-jp", "iso-2022-kr", "hz", "scsu", "bocu-1", "iso-8859-8",
                                "us-ascii", "lmbcs-1", "imap-mailbox-name", "x11-compound-text", "cp1047"}) {
        seeds.append(QByteArray("text/plain;charset=") + charset +
                     QByteArray("\0~{<:Ky2;~}\x1B$)C\x0E!~\0\xC4\xE3+AGE-z", 26));
    }
    return {seeds, run};
}
