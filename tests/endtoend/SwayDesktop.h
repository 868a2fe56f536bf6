// A desktop on a private sway without a screen, whose picture is drawn in memory.
#pragma once

#include "TestDesktop.h"
#include "WaylandInput.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace corvatto::test {

class SwayDesktop : public TestDesktop {
public:
    // Returns when sway is in charge. Throws std::runtime_error when that does not come about.
    explicit SwayDesktop(const Options& options);

    void key(const QByteArray& keys) override { m_input->key(keys); }
    void type(const QByteArray& text) override { m_input->type(text); }
    void click(QPoint position, int times, int button) override { m_input->click(position, times, button); }
    QImage picture(QRect area) override;
    QRect panel(qint64 pid) override;
    bool panelHasKeyboard(qint64 pid) override;
    Window windowInFront(qint64 panelsPid) override;
    QByteArray textTarget() const override { return "text/plain;charset=utf-8"; }
    std::optional<QByteArray> paste(const QByteArray& target) override;
    QList<QByteArray> targets() override;
    void stopServer() override { m_compositor.reset(); }

    // An ordinary program that copies and pastes: a terminal over the full screen, in which a shell runs
    // that.
    void openTerminal(const QByteArray& application, const QByteArray& command);

private:
    void startWindow(const QByteArray& application) override { openTerminal(application, "sleep inf"); }
    QJsonDocument ask(const QByteArray& question) const;

    std::unique_ptr<Process> m_compositor;
    std::unique_ptr<WaylandInput> m_input;
    std::vector<std::unique_ptr<Process>> m_terminals;
};

} // namespace corvatto::test
