#include "platform/wayland/LayerShellPresenter.h"

#include "base/ScopedEnvironment.h"
#include "keyboard-shortcuts-inhibit-unstable-v1-client-protocol.h"
#include "platform/wayland/AlertSurface.h"
#include "platform/wayland/AttachedSurface.h"
#include "platform/wayland/PanelSurface.h"
#include "platform/wayland/PopupSurface.h"

#include <QApplication>
#include <QBackingStore>
#include <QEvent>
#include <QScreen>

#include <qpa/qplatformnativeinterface.h>
#include <qpa/qplatformscreen.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace corvatto {
namespace {

// Qt gives no role to a window that has it.
constexpr Qt::WindowType roleless = Qt::BypassWindowManagerHint;

// With its first window Qt would load OpenGL and a compiler for it, which take 50 MB, and no window of ours
// is painted with them.
void paintIntoSharedMemory() {
    const ScopedEnvironment environment{{"QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none"}};
    // Qt warns that there is no such thing.
    const auto printer = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("egldisplay"); // decides now
    qInstallMessageHandler(printer);
}

// Until the compositor has let go of the picture of a window that is hidden.
constexpr std::chrono::milliseconds pictureDelay{500};

// Without an output, Qt makes up a screen.
int countScreens() {
    const auto screens = QGuiApplication::screens();
    return static_cast<int>(std::count_if(screens.cbegin(), screens.cend(), [](const QScreen* screen) {
        return screen->handle() != nullptr && !screen->handle()->isPlaceholder();
    }));
}

bool isPopup(const QWindow& window) {
    const bool isDragged = window.inherits("QShapedPixmapWindow"); // a picture that follows the pointer
    return (window.type() == Qt::Popup || window.type() == Qt::ToolTip) && !isDragged;
}

bool isModal(const QWindow& window) {
    return window.modality() != Qt::NonModal;
}

// An alert that belongs to no window would be covered by the others as soon as one of them is clicked.
void keepAboveOthers(QWindow& alert) {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        const bool isOrdinary = window->type() == Qt::Window || window->type() == Qt::Dialog;
        if (isOrdinary && window != &alert && window->isVisible() && !window->flags().testFlag(roleless)) {
            alert.setTransientParent(window);
        }
    }
}

} // namespace

std::unique_ptr<LayerShellPresenter> LayerShellPresenter::open() {
    auto shell = LayerShell::bind();
    return shell ? std::unique_ptr<LayerShellPresenter>(new LayerShellPresenter(std::move(shell))) : nullptr;
}

LayerShellPresenter::LayerShellPresenter(std::unique_ptr<LayerShell> shell) : m_shell(std::move(shell)) {
    qputenv(rolelessVariable, "1");
    paintIntoSharedMemory();
    m_pictureTimer.setSingleShot(true);
    m_pictureTimer.setInterval(pictureDelay);
    m_pictureTimer.callOnTimeout(this, &LayerShellPresenter::dropPicture);
    qApp->installEventFilter(this);
}

LayerShellPresenter::~LayerShellPresenter() {
    while (!m_roles.empty()) {
        m_roles.pop_back(); // what opened last goes first
    }
    if (m_inhibitor != nullptr) {
        zwp_keyboard_shortcuts_inhibitor_v1_destroy(m_inhibitor);
    }
}

bool LayerShellPresenter::showPanel(QWidget& panel) {
    const int screens = countScreens();
    if (screens == 0) {
        return false;
    }
    if (m_panel != &panel) {
        m_panel = &panel;
        panel.winId(); // creates the window
        panel.windowHandle()->setFlag(roleless);
    }
    if (panel.isVisible() && screens > 1) {
        panel.hide(); // it may be on another screen now, and for that needs a new surface
    }
    if (!panel.isVisible()) {
        panel.show();
        takeRole(*panel.windowHandle());
    }
    return true;
}

void LayerShellPresenter::hidePanel(QWidget& panel) {
    panel.hide();
}

void LayerShellPresenter::activate(QWidget& window) {
    // The panel would cover the window, and nothing but another layer is above the panel.
    if (m_panel) {
        m_panel->hide();
    }
    // One that is being opened will be in front anyway. Whether it is exposed does not tell: a minimised
    // window is not either.
    if (window.windowHandle() != m_opening && !window.isActiveWindow()) {
        window.hide(); // a program cannot raise a window, but a new one is in front
        window.show();
    }
}

void LayerShellPresenter::setTakesAllKeys(QWidget& window, bool takes) {
    if (m_inhibitor != nullptr) {
        zwp_keyboard_shortcuts_inhibitor_v1_destroy(std::exchange(m_inhibitor, nullptr));
    }
    QWindow* handle = window.windowHandle();
    wl_surface* surface = handle != nullptr ? LayerShell::surfaceOf(*handle) : nullptr;
    wl_seat* seat = LayerShell::seat();
    if (takes && m_shell->inhibitors() != nullptr && surface != nullptr && seat != nullptr) {
        m_inhibitor =
            zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(m_shell->inhibitors(), surface, seat);
    }
    m_shell->flush();
}

bool LayerShellPresenter::eventFilter(QObject* watched, QEvent* event) {
    if (!watched->isWindowType()) {
        return false;
    }
    QWindow& window = static_cast<QWindow&>(*watched);
    switch (event->type()) {
    case QEvent::Show: // comes before the window has a surface
        m_opening = &window;
        chooseRole(window);
        if (isModal(window)) {
            arrangePanel(true);
        }
        return false;
    case QEvent::Hide:
        if (isModal(window)) {
            arrangePanel(QGuiApplication::modalWindow() != nullptr);
        }
        return false;
    case QEvent::Expose:
        if (window.isExposed() && m_opening == &window) {
            m_opening = nullptr;
        }
        return isHeldBack(window);
    case QEvent::Paint:
        return isHeldBack(window);
    default:
        return false;
    }
}

void LayerShellPresenter::chooseRole(QWindow& window) const {
    if (isPanel(window)) {
        return;
    }
    const bool isAlert = isModal(window) && panelSurface() != nullptr;
    const bool opensOverRole = isPopup(window) && roleBelow(window) != nullptr;
    if (window.flags().testFlag(roleless) != (isAlert || opensOverRole)) {
        window.setFlag(roleless, isAlert || opensOverRole);
    }
    if (isModal(window) && !isAlert && window.transientParent() == nullptr) {
        keepAboveOthers(window);
    }
}

bool LayerShellPresenter::isHeldBack(QWindow& window) {
    if (!window.isVisible() || !window.isExposed()) {
        return false; // it has no surface, or no more
    }
    const SurfaceRole* role = roleOf(&window);
    if (role == nullptr && window.flags().testFlag(roleless)) {
        role = takeRole(window);
        if (role == nullptr) {
            return true; // a surface that has been painted could not take a role any more
        }
    }
    return role != nullptr && !role->isReady();
}

SurfaceRole* LayerShellPresenter::takeRole(QWindow& window) {
    auto role = newRole(window);
    if (!role) {
        return nullptr;
    }
    // The role goes before the surface does.
    connect(&window, &QWindow::visibleChanged, role.get(), [this, &window](bool isVisible) {
        if (!isVisible) {
            dropRole(window);
        }
    });
    // Not within the event of what goes away.
    connect(
        role.get(), &SurfaceRole::closed, role.get(), [this, raw = role.get()] { handleClosed(*raw); },
        Qt::QueuedConnection);
    m_roles.push_back(std::move(role));
    return m_roles.back().get();
}

std::unique_ptr<SurfaceRole> LayerShellPresenter::newRole(QWindow& window) const {
    using Layer = LayerSurface::Layer;
    if (isPanel(window)) {
        const QWindow* alert = QGuiApplication::modalWindow();
        const Layer layer = alert == nullptr           ? Layer::AboveAll
                            : roleOf(alert) != nullptr ? Layer::AboveWindows
                                                       : Layer::BehindWindows;
        return std::make_unique<PanelSurface>(*m_shell, window, layer, alert == nullptr);
    }
    if (isModal(window)) {
        return std::make_unique<AlertSurface>(*m_shell, window);
    }
    SurfaceRole* parent = roleBelow(window);
    if (parent == nullptr) {
        return nullptr;
    }
    // What is no widget may paint at any time, and not only when Qt says so.
    if (!window.inherits("QWidgetWindow")) {
        return std::make_unique<AttachedSurface>(*m_shell, window, *parent);
    }
    return std::make_unique<PopupSurface>(*m_shell, window, *parent);
}

void LayerShellPresenter::dropRole(QWindow& window) {
    // A surface goes after those that opened over it.
    while (QWindow* popup = popupOver(window)) {
        popup->hide();
        dropRole(*popup);
    }
    std::erase_if(m_roles, [&](const auto& role) { return &role->window() == &window; });
    if (isPanel(window)) {
        m_pictureTimer.start();
    }
}

// The buffers that Qt keeps for the next picture take megabytes, and the panel is hidden nearly always.
void LayerShellPresenter::dropPicture() {
    QBackingStore* picture = m_panel && !m_panel->isVisible() ? m_panel->backingStore() : nullptr;
    if (picture != nullptr) {
        const QRect smallest(0, 0, 1, 1);
        picture->resize(smallest.size());
        picture->beginPaint(smallest); // is when Qt looks which buffers have the right size
        picture->endPaint();
    }
}

void LayerShellPresenter::handleClosed(SurfaceRole& role) {
    if (!isPanel(role.window())) {
        role.window().close();
        return;
    }
    // Its output has gone, or became too small: there may be another place.
    const bool wasShown = role.isReady();
    m_panel->hide();
    if (wasShown) {
        showPanel(*m_panel);
    }
}

// A panel with the keyboard would leave none to alerts.
void LayerShellPresenter::arrangePanel(bool isAlertOpen) const {
    LayerSurface* panel = panelSurface();
    if (panel == nullptr) {
        return;
    }
    panel->setTakesKeyboard(!isAlertOpen);
    if (!isAlertOpen) {
        panel->setLayer(LayerSurface::Layer::AboveAll);
    }
    panel->commit();
}

SurfaceRole* LayerShellPresenter::roleOf(const QWindow* window) const {
    const auto found = std::find_if(m_roles.begin(), m_roles.end(),
                                    [&](const auto& role) { return &role->window() == window; });
    return found != m_roles.end() ? found->get() : nullptr;
}

SurfaceRole* LayerShellPresenter::roleBelow(const QWindow& popup) const {
    const QWindow* parent = popup.transientParent();
    return roleOf(parent != nullptr ? parent : QGuiApplication::focusWindow());
}

QWindow* LayerShellPresenter::popupOver(const QWindow& window) const {
    for (const auto& role : m_roles) {
        if (role->parentRole() != nullptr && &role->parentRole()->window() == &window) {
            return &role->window();
        }
    }
    return nullptr;
}

LayerSurface* LayerShellPresenter::panelSurface() const {
    return m_panel ? qobject_cast<LayerSurface*>(roleOf(m_panel->windowHandle())) : nullptr;
}

bool LayerShellPresenter::isPanel(const QWindow& window) const {
    return m_panel && &window == m_panel->windowHandle();
}

} // namespace corvatto
