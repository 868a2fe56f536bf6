// What bars and docks leave free of a monitor. Pixels, with the origin at the top left of the desktop.
#pragma once

#include <QRect>

#include <array>
#include <vector>

namespace corvatto {

// The space that a bar keeps for itself along an edge of the desktop.
struct Strut {
    Qt::Edge edge;
    QRect band;
};

// The struts in the values of _NET_WM_STRUT_PARTIAL, or of _NET_WM_STRUT with zeros after them, on a desktop
// of that size.
std::vector<Strut> strutsFrom(const std::array<quint32, 12>& values, QSize desktop);

// The part of `monitor` that the struts leave free. Those of bars on other monitors do not count.
QRect freeOfStruts(const QRect& monitor, const std::vector<Strut>& struts);

// The part of `monitor` that lies in `area`, a _NET_WORKAREA; all of it when the area is somewhere else.
QRect withinWorkArea(const QRect& monitor, const QRect& area);

} // namespace corvatto
