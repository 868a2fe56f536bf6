// Shortcuts in the terms of desktops, which name keys by the symbol they produce and not by their position.
//
// A position is named by the symbol that a US keyboard has there, the one on which its label is shown. What
// layout the desktop uses is not known here, and with more than one layout no symbol is right for all.
#pragma once

#include <QList>
#include <QString>

namespace corvatto {

// `keyCode` is a virtual key code, `modifiers` a mask of HotKeyModifier. Main thread.

// The combinations of a Qt key and Qt modifiers as which desktops may see the shortcut: Shift and the key 1
// is an exclamation mark to some. Empty for a key without a symbol of its own, as those of the keypad are.
QList<int> qtKeyCombinations(quint32 keyCode, quint32 modifiers);

// In the syntax of the freedesktop shortcuts specification, as in "LOGO+SHIFT+v". Empty as above.
QString portalTrigger(quint32 keyCode, quint32 modifiers);

// As sway's configuration names it, as in "Mod4+Shift+v". Empty as above.
QString swayBinding(quint32 keyCode, quint32 modifiers);

} // namespace corvatto
