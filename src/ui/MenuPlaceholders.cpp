#include "ui/MenuPlaceholders.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>

namespace Tessaly {

namespace {

// Whether anything listens to an action is a protected question of QObject; a pointer to the
// inherited member, taken in a derived class, may ask it of any object.
struct ConnectionQuery : QAction
{
    static bool isConnected(const QAction* action)
    {
        const auto query = &ConnectionQuery::isSignalConnected;
        return (action->*query)(QMetaMethod::fromSignal(&QAction::triggered))
            || (action->*query)(QMetaMethod::fromSignal(&QAction::toggled));
    }
};

void disableIn(const QList<QAction*>& actions)
{
    for (QAction* action : actions) {
        if (action->isSeparator())
            continue;
        if (QMenu* menu = action->menu()) {
            disableIn(menu->actions());
            continue;
        }
        if (!ConnectionQuery::isConnected(action))
            action->setEnabled(false);
    }
}

} // namespace

void disableUnconnectedEntries(QMenuBar* bar)
{
    if (bar)
        disableIn(bar->actions());
}

} // namespace Tessaly
