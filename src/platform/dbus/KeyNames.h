// Shortcuts in the terms of desktops, which name keys by the symbol they produce and not by their position.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace corvatto {

// Goes by a keyboard's keymap: what is recorded as a position then works at that position. In what follows,
// `keyCode` is a virtual key code and `modifiers` a mask of HotKeyModifier. Main thread.
class KeyNames {
public:
    // In the text format of XKB. An empty one, or one that is not understood, stands for a US keyboard.
    explicit KeyNames(const QByteArray& keymap = {});

    // The combinations of a Qt key and Qt modifiers that the shortcut is in the keymap's layouts. The one
    // that counts is the first: that of the first layout. Empty for a key without a symbol of its own, as
    // those of the keypad are.
    QList<int> qtCombinations(quint32 keyCode, quint32 modifiers) const;

    // In the syntax of the freedesktop shortcuts specification, as in "LOGO+SHIFT+v", and as sway's
    // configuration names it, as in "Mod4+Shift+v". By the first layout if it is a Latin one, else as on a US
    // keyboard. Empty as above.
    QString portalTrigger(quint32 keyCode, quint32 modifiers) const;
    QString swayBinding(quint32 keyCode, quint32 modifiers) const;

private:
    QByteArray m_keymap;
};

} // namespace corvatto
