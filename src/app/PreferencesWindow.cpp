#include "app/PreferencesWindow.h"

#include "ui/Appearance.h"

#include <QBoxLayout>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace corvatto {
namespace {

// Points. The window is higher than this when the font needs more room.
constexpr int contentWidth = 680;
constexpr int contentHeight = 460;

// The window manager puts the frame around the window after it was shown, and no event tells when its margins
// are known.
constexpr std::chrono::milliseconds frameInterval{50};
constexpr int frameLooks = 20;

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
    m_frameTimer.setInterval(frameInterval);
    m_frameTimer.callOnTimeout(this, [this] { lookForFrame(); });
}

void PreferencesWindow::centre() {
    moveToMiddle();
    m_looksLeft = frameLooks;
    m_frameTimer.start();
}

void PreferencesWindow::moveToMiddle() {
    m_marginsAtCentre = frameMargins();
    QRect frame = geometry().marginsAdded(m_marginsAtCentre);
    frame.moveCenter(screen()->availableGeometry().center());
    move(frame.topLeft());
}

void PreferencesWindow::lookForFrame() {
    if (m_marginsAtCentre != frameMargins()) {
        moveToMiddle();
    }
    if (--m_looksLeft <= 0 || !isVisible()) {
        m_frameTimer.stop();
    }
}

// The widget itself keeps the margins of its first show.
QMargins PreferencesWindow::frameMargins() const {
    return windowHandle() ? windowHandle()->frameMargins() : QMargins();
}

} // namespace corvatto
