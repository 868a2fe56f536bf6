// What desktops show of the program and of what its shortcut does, and the names they keep it by.
#pragma once

#include <QString>

namespace corvatto::programaction {

inline const QString programId = QStringLiteral("corvatto");
inline const QString programName = QStringLiteral("Corvatto");
inline const QString id = QStringLiteral("toggle");
inline const QString description = QStringLiteral("打开历史记录");

} // namespace corvatto::programaction
