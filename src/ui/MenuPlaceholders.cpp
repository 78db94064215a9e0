#include "ui/MenuPlaceholders.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <map>

namespace Tessaly {

namespace {

// How many connections an action's signals have is a protected question of QObject; a pointer to
// the inherited member, taken in a derived class, may ask it of any object.
struct ConnectionQuery : QAction
{
    static int listeners(const QAction* action)
    {
        const auto receiversOf = &ConnectionQuery::receivers;
        return (action->*receiversOf)(SIGNAL(triggered(bool)))
            + (action->*receiversOf)(SIGNAL(toggled(bool)));
    }
};

// Every menu that shows an action listens to it itself; only listeners beyond those do the work.
void countMenus(const QList<QAction*>& actions, std::map<const QAction*, int>& menus)
{
    for (const QAction* action : actions) {
        ++menus[action];
        if (const QMenu* menu = action->menu())
            countMenus(menu->actions(), menus);
    }
}

void disableIn(const QList<QAction*>& actions, const std::map<const QAction*, int>& menus)
{
    for (QAction* action : actions) {
        if (action->isSeparator())
            continue;
        if (QMenu* menu = action->menu()) {
            disableIn(menu->actions(), menus);
            continue;
        }
        if (ConnectionQuery::listeners(action) <= menus.at(action))
            action->setEnabled(false);
    }
}

} // namespace

void disableUnconnectedEntries(QMenuBar* bar)
{
    if (!bar)
        return;
    std::map<const QAction*, int> menus;
    for (const QAction* action : bar->actions()) {
        if (const QMenu* menu = action->menu())
            countMenus(menu->actions(), menus);
    }
    disableIn(bar->actions(), menus);
}

} // namespace Tessaly
