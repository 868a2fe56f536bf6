#include "platform/x11/WorkArea.h"

namespace corvatto {
namespace {

// Bars do not take half of a monitor. What would is meant for another one: a bar at the left of the right
// monitor counts its width from the left edge of the desktop, across all of the left monitor.
bool isMostOf(const QRect& monitor, const QRect& part) {
    return 2 * part.width() > monitor.width() && 2 * part.height() > monitor.height();
}

QRect without(const Strut& strut, QRect area) {
    if (strut.band.intersects(area)) {
        switch (strut.edge) {
        case Qt::LeftEdge:
            area.setLeft(strut.band.right() + 1);
            break;
        case Qt::RightEdge:
            area.setRight(strut.band.left() - 1);
            break;
        case Qt::TopEdge:
            area.setTop(strut.band.bottom() + 1);
            break;
        case Qt::BottomEdge:
            area.setBottom(strut.band.top() - 1);
            break;
        }
    }
    return area;
}

} // namespace

std::vector<Strut> strutsFrom(const std::array<quint32, 12>& values, QSize desktop) {
    constexpr Qt::Edge edges[] = {Qt::LeftEdge, Qt::RightEdge, Qt::TopEdge, Qt::BottomEdge};
    const QRect all({}, desktop);
    std::vector<Strut> struts;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto thickness = static_cast<int>(values[i]);
        const auto start = static_cast<int>(values[4 + 2 * i]), end = static_cast<int>(values[5 + 2 * i]);
        const bool isVertical = i < 2;
        QRect band = all;
        if (end > start) { // otherwise along all of the edge
            isVertical ? band.setCoords(0, start, all.right(), end)
                       : band.setCoords(start, 0, end, all.bottom());
        }
        switch (edges[i]) {
        case Qt::LeftEdge:
            band.setRight(thickness - 1);
            break;
        case Qt::RightEdge:
            band.setLeft(all.width() - thickness);
            break;
        case Qt::TopEdge:
            band.setBottom(thickness - 1);
            break;
        case Qt::BottomEdge:
            band.setTop(all.height() - thickness);
            break;
        }
        if (thickness > 0) {
            struts.push_back({edges[i], band});
        }
    }
    return struts;
}

QRect freeOfStruts(const QRect& monitor, const std::vector<Strut>& struts) {
    QRect free = monitor;
    for (const Strut& strut : struts) {
        const QRect rest = without(strut, free);
        free = isMostOf(monitor, rest) ? rest : free;
    }
    return free;
}

QRect withinWorkArea(const QRect& monitor, const QRect& area) {
    const QRect part = monitor & area;
    return isMostOf(monitor, part) ? part : monitor;
}

} // namespace corvatto
