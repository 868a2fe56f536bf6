// The name of a text flavour and the bytes under it, parted by a NUL; and what a card makes of the text.
#include "Fuzz.h"
#include "base/Graphemes.h"
#include "base/TextDecoding.h"
#include "history/TextExcerpt.h"

#include <QImage>

using namespace corvatto;

void fuzz::text(const QByteArray& input) {
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
