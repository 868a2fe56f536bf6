// Keymaps as compositors send them.
#pragma once

#include <QByteArray>

#include <xkbcommon/xkbcommon.h>

#include <cstdlib>

namespace corvatto::test {

// Of those layouts, which are named as in "us,ru".
inline QByteArray keymap(const char* layouts) {
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    const xkb_rule_names names{"evdev", "pc105", layouts, nullptr, nullptr};
    xkb_keymap* compiled = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char* text = xkb_keymap_get_as_string(compiled, XKB_KEYMAP_FORMAT_TEXT_V1);
    const QByteArray copy(text);
    std::free(text);
    xkb_keymap_unref(compiled);
    xkb_context_unref(context);
    return copy;
}

} // namespace corvatto::test
