// An input method for Qt programs: lets every key pass, and shows a magenta list below the text cursor.
#include <QGuiApplication>
#include <QInputMethod>
#include <QPainter>
#include <QRasterWindow>

#include <qpa/qplatforminputcontext.h>
#include <qpa/qplatforminputcontextplugin_p.h>

#include <optional>

namespace {

class List : public QRasterWindow {
public:
    List() {
        setFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                 Qt::WindowDoesNotAcceptFocus);
        resize(120, 40);
    }

    void showBelowCursor() {
        const QPoint cursor = QGuiApplication::inputMethod()->cursorRectangle().bottomLeft().toPoint();
        setPosition(QGuiApplication::focusWindow()->mapToGlobal(cursor));
        show();
        update();
        requestUpdate(); // unlike update(), without waiting until it is exposed
    }

private:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter(this).fillRect(QRect(QPoint(0, 0), size()), Qt::magenta);
    }
};

class InputMethod : public QPlatformInputContext {
    Q_OBJECT

    bool isValid() const override { return true; }

    void update(Qt::InputMethodQueries queries) override {
        if (queries.testFlag(Qt::ImCursorRectangle) && QGuiApplication::focusObject() != nullptr) {
            (m_list ? *m_list : m_list.emplace()).showBelowCursor();
        }
    }

    void setFocusObject(QObject* /*object*/) override { m_list.reset(); }

    std::optional<List> m_list;
};

class InputMethodPlugin : public QPlatformInputContextPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QPlatformInputContextFactoryInterface_iid FILE "input_method.json")

    QPlatformInputContext* create(const QString& /*key*/, const QStringList& /*parameters*/) override {
        return new InputMethod;
    }
};

} // namespace

#include "input_method.moc"
