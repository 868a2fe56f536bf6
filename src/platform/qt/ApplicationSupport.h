// Where the program keeps the user's files.
#pragma once

#include <QString>

namespace corvatto {

// The directory for application data: $XDG_DATA_HOME, else ~/.local/share. Empty when the user has no home.
QString applicationSupportDirectory();

// The settings file: corvatto/corvatto.ini in $XDG_CONFIG_HOME, else in ~/.config. Empty when the user has no
// home.
QString settingsFilePath();

} // namespace corvatto
