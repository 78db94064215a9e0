#pragma once

class QwtLinearColorMap;

namespace Tessaly {

// Colour maps of the "Color &Map" menu, by their index there.
enum ColorMapIndex : int {
    ViridisMap = 0,
    JetMap = 1,
    JetPlusMap = 2,
    PlasmaMap = 3,
    QuorinMap = 4,
    GrayscaleMap = 5,
};

// A new colour map for the menu entry `index`, owned by the caller; an unknown index gives Viridis.
QwtLinearColorMap* colorMapFor(int index);

} // namespace Tessaly
