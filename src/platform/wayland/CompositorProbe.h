// Tells what a Wayland compositor lets this program do, before it is decided which way the program goes.
//
// What a compositor announces it may still refuse, to programs in a sandbox for example, and a refusal ends
// the connection. So each protocol is tried, without visible effect, over a connection of its own.
#pragma once

#include <QByteArray>

namespace corvatto {

struct CompositorAbilities {
    bool isReachable = false;
    // The name of the interface by which the clipboard can be read and written without the focus; empty when
    // there is none.
    QByteArray dataControl;
    bool hasLayers = false; // windows can be placed along an edge, above all others
};

// Connects to the compositor of $WAYLAND_DISPLAY, and waits for its answers. Needs no application object.
CompositorAbilities probeCompositor();

} // namespace corvatto
