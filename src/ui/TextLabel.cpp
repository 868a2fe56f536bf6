#include "ui/TextLabel.h"

#include "ui/TextLine.h"

#include <QFontMetricsF>
#include <QPaintEvent>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace corvatto {
namespace {

constexpr int unlimited = QWIDGETSIZE_MAX;

QStringList broken(const QString& text, const QFont& font, int width) {
    QStringList lines;
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QString plain = text;
    plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    plain.replace(QLatin1Char('\t'), QStringLiteral("    ")); // not drawn outside a layout
    for (const QString& paragraph : plain.split(QLatin1Char('\n'))) {
        QTextLayout layout(paragraph, font);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            lines << paragraph.mid(line.textStart(), line.textLength());
        }
        layout.endLayout();
    }
    return lines;
}

} // namespace

TextLabel::TextLabel(const QString& text, const QFont& font, const QColor& color, int lineSpacing)
    : QLabel(text), m_lineSpacing(lineSpacing) {
    setTextFormat(Qt::PlainText);
    setFont(font);
    QPalette palette;
    palette.setColor(QPalette::WindowText, color);
    setPalette(palette);
}

const QStringList& TextLabel::lines(int width) const {
    if (m_brokenWidth != width || m_brokenText != text()) {
        m_brokenWidth = width;
        m_brokenText = text();
        m_lines = broken(m_brokenText, font(), wordWrap() ? width : unlimited);
    }
    return m_lines;
}

double TextLabel::pitch() const {
    return textline::height(font()) + m_lineSpacing;
}

int TextLabel::heightOf(qsizetype lineCount) const {
    const QMargins margins = contentsMargins();
    return static_cast<int>(static_cast<double>(lineCount) * pitch()) - m_lineSpacing + margins.top() +
           margins.bottom();
}

QSize TextLabel::sizeHint() const {
    const QMargins margins = contentsMargins();
    double widest = 0;
    for (const QString& line : lines(unlimited)) {
        widest = std::max(widest, QFontMetricsF(font()).horizontalAdvance(line));
    }
    return {static_cast<int>(std::ceil(widest)) + margins.left() + margins.right(),
            heightOf(lines(unlimited).size())};
}

QSize TextLabel::minimumSizeHint() const {
    return wordWrap() ? QSize(0, heightOf(1)) : sizeHint();
}

int TextLabel::heightForWidth(int width) const {
    const QMargins margins = contentsMargins();
    return heightOf(lines(width - margins.left() - margins.right()).size());
}

void TextLabel::paintEvent(QPaintEvent* event) {
    const QRectF area = contentsRect();
    const QStringList& shown = lines(contentsRect().width());
    const double slack = area.height() - (static_cast<double>(shown.size()) * pitch() - m_lineSpacing);
    const double top = area.top() + (alignment().testFlag(Qt::AlignTop) ? 0 : slack / 2);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    // A long text is scrolled, and only what is in view is worth drawing.
    const auto first = std::max(qsizetype{0}, qsizetype((event->rect().top() - top) / pitch()) - 1);
    const auto last = std::min(shown.size() - 1, qsizetype((event->rect().bottom() - top) / pitch()) + 1);
    for (qsizetype i = first; i <= last; ++i) {
        const double baseline = top + static_cast<double>(i) * pitch() + textline::ascent(font());
        textline::drawOnBaseline(painter, area, baseline, shown[i], alignment());
    }
}

} // namespace corvatto
