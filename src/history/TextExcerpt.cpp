#include "history/TextExcerpt.h"

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

Beginning beginningOf(const QString& text) {
    Beginning beginning{text.left(longestLaidOut), text.size() > longestLaidOut};
    if (beginning.isCut && beginning.text.back().isHighSurrogate()) {
        beginning.text.chop(1);
    }
    beginning.text.replace(QStringLiteral("\r\n"), QString(QChar::LineSeparator));
    for (QChar& character : beginning.text) {
        if (character == QLatin1Char('\n') || character == QLatin1Char('\r') ||
            character == QChar::ParagraphSeparator) {
            character = QChar::LineSeparator;
        } else if (character.isNull()) {
            character = QChar(0x2400); // a NUL ends nothing here; show its symbol
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
    // Fonts that cover every script reserve room for the tallest one; at a card's sizes that would cost
    // lines.
    constexpr double lineHeightPerSize = 1.2;
    const double lineHeight = std::min(metrics.height(), font.pixelSize() * lineHeightPerSize);
    const double step = lineHeight + lineSpacing;
    // Lines stand on evenly spaced baselines, whatever other fonts their characters are taken from.
    const double firstBaseline = metrics.ascent() - (metrics.height() - lineHeight) / 2;
    const int fitting = static_cast<int>((area.height() + lineSpacing) / step);
    const int lineLimit = std::min(maximumLines, fitting);
    if (lineLimit <= 0 || text.isEmpty()) {
        return 0;
    }

    const Beginning beginning = beginningOf(text);
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
        line.setPosition({0, firstBaseline + lines * step - line.ascent()});
        ++lines;
    }
    layout.endLayout();

    if (painter != nullptr) {
        painter->setFont(font);
        painter->setPen(color);
        const int whole = moreFollows ? lines - 1 : lines;
        for (int i = 0; i < whole; ++i) {
            layout.lineAt(i).draw(painter, area.topLeft());
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
            const double slack = area.width() - metrics.horizontalAdvance(shown);
            const double indent = alignment.testFlag(Qt::AlignHCenter) ? std::max(0.0, slack / 2) : 0.0;
            painter->drawText(area.topLeft() + QPointF(indent, last.y() + last.ascent()), shown);
        }
    }
    return lines * step - lineSpacing;
}

} // namespace corvatto
