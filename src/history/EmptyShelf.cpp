#include "history/EmptyShelf.h"

#include "history/HistoryShelf.h"
#include "ui/Appearance.h"
#include "ui/Symbols.h"
#include "ui/TextLine.h"

#include <QPainter>

#include <array>

namespace corvatto {
namespace {

using namespace appearance;

struct Line {
    QString text;
    QFont font;
    QColor color;
};

std::array<Line, 3> lines() {
    return {Line{QStringLiteral("暂无历史记录"), systemFont(16, QFont::Medium), secondaryLabelColor()},
            Line{QStringLiteral("复制内容后，它们会显示在这里"), systemFont(14),
                 faded(secondaryLabelColor(), 0.7)},
            Line{QStringLiteral("Esc 可关闭此窗口"), systemFont(14), faded(secondaryLabelColor(), 0.7)}};
}

} // namespace

EmptyShelf::EmptyShelf() {
    setMaximumHeight(HistoryShelf::shelfHeight);
    setAccessibleName(lines()[0].text);
    setAccessibleDescription(lines()[1].text);
}

QSize EmptyShelf::sizeHint() const {
    return {0, HistoryShelf::shelfHeight};
}

void EmptyShelf::paintEvent(QPaintEvent* /*event*/) {
    constexpr double symbolSize = 34;
    constexpr double spacing = 10;
    const QString symbol = QStringLiteral("doc.on.clipboard");
    const double symbolHeight = symbols::size(symbol, symbolSize).height();
    double height = symbolHeight;
    for (const Line& line : lines()) {
        height += spacing + textline::height(line.font);
    }

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    double top = (this->height() - height) / 2;
    symbols::draw(painter, symbol, QRectF(0, top, width(), symbolHeight), symbolSize,
                  faded(secondaryLabelColor(), 0.45));
    top += symbolHeight;
    for (const Line& line : lines()) {
        top += spacing;
        const double lineHeight = textline::height(line.font);
        painter.setFont(line.font);
        painter.setPen(line.color);
        textline::draw(painter, QRectF(0, top, width(), lineHeight), line.text, Qt::AlignHCenter);
        top += lineHeight;
    }
}

} // namespace corvatto
