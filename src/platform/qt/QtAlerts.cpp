#include "platform/qt/QtAlerts.h"

#include "platform/Appearance.h"

#include <QMessageBox>
#include <QPushButton>

namespace corvatto {

int QtAlerts::runModal(const Alert& alert) {
    QMessageBox box;
    box.setPalette(appearance::lightPalette());
    box.setIcon(alert.style == Alert::Style::Warning ? QMessageBox::Warning : QMessageBox::Information);
    box.setWindowTitle(QStringLiteral("Corvatto"));
    box.setText(alert.messageText);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(alert.informativeText);
    // The panel floats above ordinary windows; a question about it must float above the panel.
    box.setWindowFlag(Qt::WindowStaysOnTopHint);

    // The role fixes where a style puts a button, so all share one that keeps the order of adding.
    QList<QAbstractButton*> buttons;
    for (const QString& title : alert.buttons) {
        buttons.append(box.addButton(title, QMessageBox::ActionRole));
    }
    const bool isClosingLast = alert.buttonOnClosing < 0 || alert.buttonOnClosing >= buttons.size();
    const int onClosing = isClosingLast ? static_cast<int>(buttons.size()) - 1 : alert.buttonOnClosing;
    if (!buttons.isEmpty()) {
        box.setDefaultButton(qobject_cast<QPushButton*>(buttons.first()));
        box.setEscapeButton(buttons.at(onClosing));
    }
    box.exec();
    const auto chosen = static_cast<int>(buttons.indexOf(box.clickedButton()));
    return chosen >= 0 ? chosen : onClosing;
}

} // namespace corvatto
