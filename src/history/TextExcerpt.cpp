#include "history/TextExcerpt.h"

#include "ui/TextLine.h"

#include <QFontMetricsF>
#include <QTextLayout>

#include <algorithm>

namespace corvatto {
namespace {

// More than any area of a card shows, short enough to be laid out between two frames.
constexpr qsizetype longestLaidOut = 4096; // UTF-16 units

constexpr QChar ellipsis(0x2026);

constexpr int spacesPerTab = 4;

struct Beginning {
    QString text; // with line separators for all line ends
    bool isCut;
};

bool isLineEnd(QChar character) {
    switch (character.unicode()) {
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r':
    case 0x0085: // next line
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
        return true;
    default:
        return false;
    }
}

// Where the first line with something in it begins, if `lines` blank ones come before it; otherwise 0.
qsizetype startOfText(const QString& text, int lines) {
    qsizetype start = 0;
    int blank = 0;
    for (qsizetype i = 0; i < text.size() && text[i].isSpace(); ++i) {
        if (isLineEnd(text[i])) {
            start = i + 1;
            blank += text[i] == QLatin1Char('\n') && i > 0 && text[i - 1] == QLatin1Char('\r') ? 0 : 1;
        }
    }
    return blank >= lines ? start : 0;
}

Beginning beginningOf(const QString& text, int lines) {
    const qsizetype start = startOfText(text, lines);
    Beginning beginning{text.mid(start, longestLaidOut), text.size() - start > longestLaidOut};
    if (beginning.isCut && beginning.text.back().isHighSurrogate()) {
        beginning.text.chop(1);
    }
    beginning.text.replace(QStringLiteral("\r\n"), QString(QChar::LineSeparator));
    for (QChar& character : beginning.text) {
        if (isLineEnd(character)) {
            character = QChar::LineSeparator;
        } else if (character.isNull()) {
            character = QChar(0x2400); // the symbol for NUL, which does not end the text
        }
    }
    return beginning;
}

} // namespace

double TextExcerpt::draw(QPainter& painter, const QRectF& area, const QString& text) const {
    return layOut(&painter, area, text);
}

double TextExcerpt::height(const QRectF& area, const QString& text) const {
    return layOut(nullptr, area, text);
}

double TextExcerpt::layOut(QPainter* painter, const QRectF& area, const QString& text) const {
    const QFontMetricsF metrics(font);
    const double step = textline::height(font) + lineSpacing;
    const int fitting = static_cast<int>((area.height() + lineSpacing) / step);
    const int lineLimit = std::min(maximumLines, fitting);
    if (lineLimit <= 0 || text.isEmpty()) {
        return 0;
    }

    const Beginning beginning = beginningOf(text, lineLimit);
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTabStopDistance(metrics.horizontalAdvance(QLatin1Char(' ')) * spacesPerTab);
    QTextLayout layout(beginning.text, font);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    layout.beginLayout();
    int lines = 0;
    bool moreFollows = beginning.isCut;
    while (true) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(area.width());
        if (lines == lineLimit) {
            moreFollows = true;
            break;
        }
        ++lines;
    }
    layout.endLayout();

    if (painter != nullptr) {
        painter->setFont(font);
        painter->setPen(color);
        const int whole = moreFollows ? lines - 1 : lines;
        const auto baseline = [&](int line) {
            return textline::onPixel(*painter, area.top() + textline::ascent(font) + line * step);
        };
        for (int i = 0; i < whole; ++i) {
            const QTextLine line = layout.lineAt(i);
            line.draw(painter, {area.left(), baseline(i) - line.y() - line.ascent()});
        }
        if (moreFollows) {
            // The rest of the paragraph, cut where the width ends; or all of it and an ellipsis for what
            // comes after.
            const QTextLine last = layout.lineAt(lines - 1);
            const qsizetype start = last.textStart();
            const qsizetype end = beginning.text.indexOf(QChar::LineSeparator, start);
            QString rest = beginning.text.mid(start, end < 0 ? -1 : end - start) + ellipsis;
            rest.replace(QLatin1Char('\t'),
                         QString(spacesPerTab, QLatin1Char(' '))); // not drawn outside a layout
            const QString shown = metrics.elidedText(rest, Qt::ElideRight, area.width());
            textline::drawOnBaseline(*painter, area, baseline(lines - 1), shown, alignment);
        }
    }
    return lines * step - lineSpacing;
}

} // namespace corvatto
