#pragma once

class QMenuBar;

namespace Tessaly {

// Disables every menu entry below `bar` (submenus included) that nothing is connected to: an entry
// of a feature that isn't built yet. Such an entry stays visible, so that the menu keeps its shape,
// but it no longer looks as if it worked while nothing happens. Entries that open a submenu, and
// separators, are left alone. Run it once all connections are made. Menus listen to their entries
// themselves, so an entry counts as connected when it has listeners beyond the menus that show it.
void disableUnconnectedEntries(QMenuBar* bar);

} // namespace Tessaly
