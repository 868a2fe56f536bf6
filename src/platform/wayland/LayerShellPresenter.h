// Presents the program's windows to a Wayland compositor. The panel is a surface on the topmost layer with
// the keyboard for itself; what opens over it, its menus and alerts, are surfaces that belong to it. Other
// windows are ordinary ones, of which a compositor gives the keyboard to the one that was shown last. No
// ordinary window can be above the panel: when one is activated, the panel hides, and a panel that is shown
// while an alert is such a window stays behind all windows until the alert is answered.
//
// Nothing here waits for the compositor: a window that is shown is painted when the compositor has told its
// size.
#pragma once

#include "platform/WindowPresenter.h"
#include "platform/wayland/LayerShell.h"
#include "platform/wayland/SurfaceRole.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

struct zwp_keyboard_shortcuts_inhibitor_v1;

namespace corvatto {

class LayerSurface;

class LayerShellPresenter : public QObject, public WindowPresenter {
    Q_OBJECT

public:
    // Null when the compositor has no layers, or Qt does not run on Wayland. Before the first window is
    // shown. Sets `rolelessVariable` of SurfaceRole.h for good.
    static std::unique_ptr<LayerShellPresenter> open();
    ~LayerShellPresenter() override;

    void becomeAccessory() override {} // no protocol for it
    bool showPanel(QWidget& panel) override;
    void hidePanel(QWidget& panel) override;
    void activate(QWidget& window) override;
    void setTakesAllKeys(QWidget& window, bool takes) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit LayerShellPresenter(std::unique_ptr<LayerShell> shell);

    void chooseRole(QWindow& window) const;
    bool isHeldBack(QWindow& window);
    SurfaceRole* takeRole(QWindow& window);
    std::unique_ptr<SurfaceRole> newRole(QWindow& window) const;
    void dropRole(QWindow& window);
    void handleClosed(SurfaceRole& role);
    void dropPicture();
    void arrangePanel(bool isAlertOpen) const;

    SurfaceRole* roleOf(const QWindow* window) const;
    SurfaceRole* roleBelow(const QWindow& popup) const;
    QWindow* popupOver(const QWindow& window) const; // any of them
    LayerSurface* panelSurface() const;              // null while the panel is hidden
    bool isPanel(const QWindow& window) const;

    std::unique_ptr<LayerShell> m_shell;
    QPointer<QWidget> m_panel;                         // the one that was shown last
    QPointer<QWindow> m_opening;                       // shown, and not on the screen yet
    std::vector<std::unique_ptr<SurfaceRole>> m_roles; // of visible windows
    QTimer m_pictureTimer;
    zwp_keyboard_shortcuts_inhibitor_v1* m_inhibitor = nullptr;
};

} // namespace corvatto
