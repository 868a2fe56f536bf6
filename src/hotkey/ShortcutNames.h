// How a shortcut is written: the symbols of its modifiers and the name of its key, as in ⇧⌘V.
#pragma once

#include <QString>

namespace corvatto {

// `modifiers` is a mask of HotKeyModifier.
QString shortcutString(qint64 keyCode, qint64 modifiers);

// The label of a virtual key code on an ANSI keyboard; the code in decimal for one without a label.
QString keyName(qint64 keyCode);

} // namespace corvatto
