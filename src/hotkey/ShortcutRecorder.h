// Binds the recorder control to the stored shortcut: what is recorded is stored, what is stored is shown.
#pragma once

#include "hotkey/ShortcutRecorderView.h"
#include "platform/UserDefaults.h"

namespace corvatto {

class ShortcutRecorder : public ShortcutRecorderView {
    Q_OBJECT

public:
    // The settings outlive the control.
    explicit ShortcutRecorder(UserDefaults& defaults);

Q_SIGNALS:
    // What was recorded is what is stored already, so that the settings tell of no change.
    void recordedSame();

private:
    void showStored();

    UserDefaults& m_defaults;
};

} // namespace corvatto
