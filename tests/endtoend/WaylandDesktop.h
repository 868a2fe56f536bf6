// What the desktops on private Wayland compositors without a screen have in common.
#pragma once

#include "TestDesktop.h"
#include "WaylandInput.h"

namespace corvatto::test {

class WaylandDesktop : public TestDesktop {
public:
    void key(const QByteArray& keys) override { m_input->key(keys); }
    void type(const QByteArray& text) override { m_input->type(text); }
    void click(QPoint position, int times, int button) override { m_input->click(position, times, button); }
    QRect panel(qint64 pid) override;
    QByteArray textTarget() const override { return "text/plain;charset=utf-8"; }
    std::optional<QByteArray> paste(const QByteArray& target) override;
    QList<QByteArray> targets() override;
    void stopServer() override { m_compositor.reset(); }

protected:
    using TestDesktop::TestDesktop;

    // Of the name that the compositor's socket has.
    void plugIn(const QByteArray& compositor);

    std::unique_ptr<Process> m_compositor;

private:
    std::unique_ptr<WaylandInput> m_input;
};

} // namespace corvatto::test
