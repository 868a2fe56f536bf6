// The layer shell's protocol, whose C declarations use a word that C++ keeps for itself.
#pragma once

#include <wayland-client.h> // before the word has another meaning

#define namespace namespaceName
#include "wlr-layer-shell-unstable-v1-client-protocol.h"
#undef namespace
