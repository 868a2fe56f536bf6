#include "platform/qt/QtAlerts.h"

#include "platform/qt/AlertDialog.h"

namespace corvatto {

int QtAlerts::runModal(const Alert& alert) {
    AlertDialog dialog(alert);
    dialog.exec();
    return dialog.chosen();
}

} // namespace corvatto
