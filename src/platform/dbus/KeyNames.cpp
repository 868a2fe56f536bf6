#include "platform/dbus/KeyNames.h"

#include "platform/HotKeyCenter.h"
#include "platform/KeyEvent.h"

#include <QStringList>

#include <xkbcommon/xkbcommon.h>

#include <array>
#include <memory>
#include <optional>

namespace corvatto {
namespace {

constexpr quint32 xKeycodeOffset = 8; // keycodes of a keymap are evdev codes plus eight

// A keymap that is compiled. Not kept: its tables are large, and shortcuts are named rarely.
class Keyboard {
public:
    explicit Keyboard(const QByteArray& text) : m_context(xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES)) {
        if (m_context) {
            xkb_context_set_log_level(m_context.get(), XKB_LOG_LEVEL_CRITICAL); // it writes to standard error
        }
        if (m_context && !text.isEmpty()) {
            m_keymap.reset(xkb_keymap_new_from_buffer(
                m_context.get(), text.constData(), static_cast<std::size_t>(text.size()),
                XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
        }
        if (m_context && !m_keymap) { // and none where the files of the layouts are missing
            constexpr xkb_rule_names us{"evdev", "pc105", "us", nullptr, nullptr};
            m_keymap.reset(xkb_keymap_new_from_names(m_context.get(), &us, XKB_KEYMAP_COMPILE_NO_FLAGS));
        }
    }

    quint32 layoutCount() const { return m_keymap ? xkb_keymap_num_layouts(m_keymap.get()) : 0; }

    // What the key produces in a layout, plain (level 0) or with Shift (level 1).
    xkb_keysym_t symbolAt(quint32 keyCode, xkb_layout_index_t layout, xkb_level_index_t level) const {
        const auto evdev = evdevCodeForKeyCode(keyCode);
        const xkb_keysym_t* symbols = nullptr;
        const int count = evdev && m_keymap
                              ? xkb_keymap_key_get_syms_by_level(m_keymap.get(), *evdev + xKeycodeOffset,
                                                                 layout, level, &symbols)
                              : 0;
        return count == 1 ? symbols[0] : xkb_keysym_t{XKB_KEY_NoSymbol};
    }

private:
    struct Deleter {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
    };

    std::unique_ptr<xkb_context, Deleter> m_context;
    std::unique_ptr<xkb_keymap, Deleter> m_keymap;
};

// The Qt key of a symbol that prints a character.
std::optional<int> printableQtKey(xkb_keysym_t symbol) {
    const char32_t character = xkb_keysym_to_utf32(symbol);
    return character >= U' ' && character != U'\x7F'
               ? std::optional(static_cast<int>(QChar::toUpper(character)))
               : std::nullopt;
}

bool isOnKeypad(xkb_keysym_t symbol) {
    return symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_Equal;
}

bool isLatin(xkb_keysym_t symbol) {
    constexpr char32_t endOfLatin = U'\u0250';
    return xkb_keysym_to_utf32(symbol) < endOfLatin; // keys that print nothing included
}

// The name of the key's symbol after those of the held modifiers, in that order. Empty for a key without one.
QString joinedName(const QByteArray& keymap, quint32 keyCode, quint32 modifiers,
                   const QList<std::pair<HotKeyModifier, QString>>& modifierNames) {
    xkb_keysym_t symbol = Keyboard(keymap).symbolAt(keyCode, 0, 0);
    if (!isLatin(symbol)) {
        symbol = Keyboard({}).symbolAt(keyCode, 0, 0);
    }
    std::array<char, 64> name{};
    if (symbol == XKB_KEY_NoSymbol || isOnKeypad(symbol) ||
        xkb_keysym_get_name(symbol, name.data(), name.size()) <= 0) {
        return {};
    }
    QStringList parts;
    for (const auto& [modifier, modifierName] : modifierNames) {
        if ((modifiers & modifier) != 0) {
            parts << modifierName;
        }
    }
    parts << QString::fromLatin1(name.data());
    return parts.join(u'+');
}

} // namespace

KeyNames::KeyNames(const QByteArray& keymap) : m_keymap(keymap) {}

QList<int> KeyNames::qtCombinations(quint32 keyCode, quint32 modifiers) const {
    const bool hasShift = (modifiers & shiftKey) != 0;
    int held = 0;
    held |= (modifiers & commandKey) != 0 ? static_cast<int>(Qt::META) : 0;
    held |= (modifiers & optionKey) != 0 ? static_cast<int>(Qt::ALT) : 0;
    held |= (modifiers & controlKey) != 0 ? static_cast<int>(Qt::CTRL) : 0;
    const int heldWithShift = held | (hasShift ? static_cast<int>(Qt::SHIFT) : 0);

    QList<int> combinations;
    const auto add = [&combinations](int combination) {
        if (!combinations.contains(combination)) {
            combinations.append(combination);
        }
    };
    const Keyboard keyboard(m_keymap);
    for (quint32 layout = 0; layout < keyboard.layoutCount(); ++layout) {
        const xkb_keysym_t symbol = keyboard.symbolAt(keyCode, layout, 0);
        const auto printable = printableQtKey(symbol);
        const auto key = printable ? printable : qtKeyForKeyCode(keyCode);
        if (!key || isOnKeypad(symbol)) {
            continue;
        }
        // Where Shift makes another symbol of the key, KWin takes it for part of that: an exclamation mark is
        // pressed without Shift. Other versions may see Shift and the key.
        const auto shifted = printableQtKey(keyboard.symbolAt(keyCode, layout, 1));
        if (hasShift && shifted && shifted != key) {
            add(held | *shifted);
        }
        add(heldWithShift | *key);
    }
    return combinations;
}

QString KeyNames::portalTrigger(quint32 keyCode, quint32 modifiers) const {
    return joinedName(m_keymap, keyCode, modifiers,
                      {{commandKey, QStringLiteral("LOGO")},
                       {controlKey, QStringLiteral("CTRL")},
                       {optionKey, QStringLiteral("ALT")},
                       {shiftKey, QStringLiteral("SHIFT")}});
}

QString KeyNames::swayBinding(quint32 keyCode, quint32 modifiers) const {
    return joinedName(m_keymap, keyCode, modifiers,
                      {{commandKey, QStringLiteral("Mod4")},
                       {controlKey, QStringLiteral("Ctrl")},
                       {optionKey, QStringLiteral("Mod1")},
                       {shiftKey, QStringLiteral("Shift")}});
}

} // namespace corvatto
