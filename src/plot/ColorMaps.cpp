#include "plot/ColorMaps.h"

#include <QColor>
#include <qwt_color_map.h>

namespace Tessaly {

QwtLinearColorMap* colorMapFor(int index)
{
    // Named colours are Qt's own (Qt::green is (0, 255, 0)), not the web colours of the same name.
    QwtLinearColorMap* map = nullptr;
    switch (index) {
    case JetMap:
        map = new QwtLinearColorMap(QColor(Qt::blue), QColor(Qt::red));
        map->addColorStop(0.25, QColor(Qt::cyan));
        map->addColorStop(0.5, QColor(Qt::green));
        map->addColorStop(0.75, QColor(Qt::yellow));
        break;
    case JetPlusMap:
        map = new QwtLinearColorMap(QColor(100, 0, 180), QColor(Qt::red));
        map->addColorStop(0.2, QColor(Qt::blue));
        map->addColorStop(0.4, QColor(Qt::cyan));
        map->addColorStop(0.6, QColor(Qt::green));
        map->addColorStop(0.8, QColor(Qt::yellow));
        break;
    case PlasmaMap:
        map = new QwtLinearColorMap(QColor(13, 8, 135), QColor(240, 249, 33));
        map->addColorStop(0.25, QColor(126, 3, 168));
        map->addColorStop(0.5, QColor(204, 71, 120));
        map->addColorStop(0.75, QColor(248, 149, 64));
        break;
    case QuorinMap:
        map = new QwtLinearColorMap(QColor(0, 68, 108), QColor(254, 204, 0));
        map->addColorStop(0.25, QColor(0, 171, 173));
        map->addColorStop(0.5, QColor(104, 193, 194));
        map->addColorStop(0.75, QColor(166, 215, 213));
        break;
    case GrayscaleMap:
        map = new QwtLinearColorMap(QColor(Qt::black), QColor(Qt::white));
        break;
    default:
        map = new QwtLinearColorMap(QColor(68, 1, 84), QColor(253, 231, 37));
        map->addColorStop(0.25, QColor(59, 82, 139));
        map->addColorStop(0.5, QColor(33, 145, 140));
        map->addColorStop(0.75, QColor(94, 201, 98));
        break;
    }
    return map;
}

} // namespace Tessaly
