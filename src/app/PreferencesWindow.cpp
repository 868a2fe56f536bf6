#include "app/PreferencesWindow.h"

#include "ui/Appearance.h"

#include <QBoxLayout>
#include <QEvent>
#include <QScreen>

#include <algorithm>

namespace corvatto {
namespace {

// Points. The window is higher than this when the font needs more room.
constexpr int contentWidth = 680;
constexpr int contentHeight = 460;

} // namespace

PreferencesWindow::PreferencesWindow(QWidget* content)
    : QWidget(nullptr, Qt::Dialog | // without buttons to minimise and maximise
                           Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                           Qt::WindowStaysOnTopHint), // like the panel, which would hide it
      m_content(content) {
    setWindowTitle(QStringLiteral("Corvatto Preferences"));
    setPalette(appearance::lightPalette());
    setAttribute(Qt::WA_QuitOnClose, false);
    content->ensurePolished();
    setFixedSize(contentWidth, std::max(contentHeight, content->sizeHint().height()));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_content);
}

void PreferencesWindow::centre() {
    const QRect available = screen()->availableGeometry();
    QRect frame = frameGeometry();
    frame.moveCenter(available.center());
    m_marginsAtCentre = frameMargins();
    move(frame.topLeft());
}

// The window manager puts the frame around the window only after it was shown and centred.
bool PreferencesWindow::event(QEvent* event) {
    const bool isHandled = QWidget::event(event);
    const bool mayHaveFrame = event->type() == QEvent::Move || event->type() == QEvent::WindowActivate;
    if (mayHaveFrame && isVisible() && m_marginsAtCentre && *m_marginsAtCentre != frameMargins()) {
        centre();
    }
    return isHandled;
}

QMargins PreferencesWindow::frameMargins() const {
    const QRect inner = geometry(), outer = frameGeometry();
    return {inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
            outer.bottom() - inner.bottom()};
}

} // namespace corvatto
