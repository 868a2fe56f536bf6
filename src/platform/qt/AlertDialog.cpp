#include "platform/qt/AlertDialog.h"

#include "ui/Appearance.h"
#include "ui/Symbols.h"
#include "ui/TextLabel.h"

#include <QApplication>
#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QWindow>

#include <algorithm>

namespace corvatto {
namespace {

// Points.
constexpr int iconSide = 48;
constexpr int narrowestText = 260;
constexpr int widestText = 400;

constexpr double longestTextShare = 0.6; // of the screen's height

QPixmap warningSign(double devicePixelRatio) {
    const QString name = QStringLiteral("exclamationmark.triangle.fill");
    return symbols::pixmap(name, iconSide / symbols::size(name, 1).height(), appearance::orange(),
                           devicePixelRatio);
}

QLabel* newLabel(const QString& text, const QFont& font) {
    auto* label = new TextLabel(text, font, appearance::labelColor());
    label->setWordWrap(true);
    return label;
}

} // namespace

AlertDialog::AlertDialog(const Alert& alert)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint |
                           // Above the panel, which floats above ordinary windows.
                           Qt::WindowStaysOnTopHint) {
    const auto count = static_cast<int>(alert.buttons.size());
    m_chosen =
        alert.buttonOnClosing >= 0 && alert.buttonOnClosing < count ? alert.buttonOnClosing : count - 1;
    setWindowTitle(QStringLiteral("Corvatto"));
    setPalette(appearance::lightPalette());

    auto* picture = new QLabel;
    picture->setPixmap(
        alert.style == Alert::Style::Warning
            ? warningSign(devicePixelRatio())
            : QApplication::windowIcon().pixmap(QSize(iconSide, iconSide), devicePixelRatio()));

    auto* layout = new QHBoxLayout;
    layout->setSpacing(16);
    layout->addWidget(picture, 0, Qt::AlignTop);
    layout->addWidget(newText(alert), 1);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(20, 20, 20, 16);
    rows->setSpacing(16);
    rows->addLayout(layout);
    rows->addWidget(newButtons(alert.buttons));
    rows->setSizeConstraint(QLayout::SetFixedSize);
}

void AlertDialog::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    if (windowHandle()->flags().testFlag(Qt::BypassWindowManagerHint)) {
        // Without a frame it would merge with what it stands on.
        QPainter painter(this);
        painter.setPen(QPen(appearance::tertiaryLabelColor(), 1));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

QWidget* AlertDialog::newText(const Alert& alert) {
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(newLabel(alert.messageText, appearance::systemFont(13, QFont::Bold)));
    layout->addWidget(newScrollingText(alert.informativeText));
    layout->addStretch();
    return column;
}

QWidget* AlertDialog::newScrollingText(const QString& text) {
    QLabel* label = newLabel(text, appearance::systemFont(13));
    const int width = std::clamp(label->sizeHint().width(), narrowestText, widestText);
    label->setFixedWidth(width);
    const int height = label->heightForWidth(width);
    label->setFixedHeight(height);

    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(label);
    const int longest = static_cast<int>(screen()->availableGeometry().height() * longestTextShare);
    const int scrollBar = height > longest ? area->verticalScrollBar()->sizeHint().width() : 0;
    area->setFixedSize(width + scrollBar, std::min(height, longest));
    return area;
}

QWidget* AlertDialog::newButtons(const QStringList& titles) {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    for (int i = 0; i < titles.size(); ++i) {
        auto* button = new QPushButton(titles[i]);
        button->setFont(appearance::systemFont(13));
        button->setMinimumWidth(80);
        button->setDefault(i == 0);
        connect(button, &QPushButton::clicked, this, [this, i] {
            m_chosen = i;
            accept();
        });
        layout->addWidget(button);
    }
    return row;
}

} // namespace corvatto
