#include "ui/FlowLayout.h"

#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <utility>
#include <vector>

namespace Tessaly {

FlowLayout::FlowLayout(QWidget* parent, int horizontalSpacing, int verticalSpacing)
    : QLayout(parent)
    , hSpacing(horizontalSpacing)
    , vSpacing(verticalSpacing)
{
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout()
{
    while (QLayoutItem* item = takeAt(0))
        delete item;
}

void FlowLayout::addItem(QLayoutItem* item)
{
    items.append(item);
}

int FlowLayout::count() const
{
    return items.size();
}

QLayoutItem* FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < items.size() ? items.at(index) : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index)
{
    return index >= 0 && index < items.size() ? items.takeAt(index) : nullptr;
}

Qt::Orientations FlowLayout::expandingDirections() const
{
    return {};
}

bool FlowLayout::hasHeightForWidth() const
{
    return true;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

// As high as the lines need at the width last given, so that a splitter, which knows nothing of
// heights that follow widths, leaves room for all of them.
QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem* item : items) {
        if (!item->isEmpty())
            size = size.expandedTo(item->minimumSize());
    }
    const QMargins margins = contentsMargins();
    size += QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
    return QSize(size.width(), std::max(size.height(), arrangedHeight));
}

// One line with every item, as wide as it would like to be.
QSize FlowLayout::sizeHint() const
{
    int width = 0;
    int height = 0;
    for (const QLayoutItem* item : items) {
        if (item->isEmpty())
            continue;
        const QSize hint = item->sizeHint();
        width += (width > 0 ? hSpacing : 0) + hint.width();
        height = std::max(height, hint.height());
    }
    const QMargins margins = contentsMargins();
    return QSize(width + margins.left() + margins.right(), height + margins.top() + margins.bottom());
}

void FlowLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    const int height = arrange(rect, true);
    if (height != arrangedHeight) {
        arrangedHeight = height;
        // The minimum height changed with the number of lines; the parents measure again once this
        // round of layout is over.
        QTimer::singleShot(0, this, [this] {
            invalidate();
            if (QWidget* owner = parentWidget())
                owner->updateGeometry();
        });
    }
}

int FlowLayout::arrange(const QRect& rect, bool apply) const
{
    const QMargins margins = contentsMargins();
    const QRect area = rect.adjusted(margins.left(), margins.top(), -margins.right(), -margins.bottom());
    int x = area.x();
    int y = area.y();
    int lineHeight = 0;
    // Items of one line share its height and are centred in it vertically.
    std::vector<std::pair<QLayoutItem*, QRect>> line;
    const auto placeLine = [&] {
        if (apply) {
            for (const auto& [item, place] : line)
                item->setGeometry(place.translated(0, (lineHeight - place.height()) / 2));
        }
        line.clear();
    };
    for (QLayoutItem* item : items) {
        if (item->isEmpty())
            continue;
        QSize hint = item->sizeHint();
        hint.setWidth(std::min(hint.width(), std::max(area.width(), item->minimumSize().width())));
        if (!line.empty() && x + hint.width() > area.right() + 1) {
            placeLine();
            x = area.x();
            y += lineHeight + vSpacing;
            lineHeight = 0;
        }
        line.push_back({ item, QRect(QPoint(x, y), hint) });
        x += hint.width() + hSpacing;
        lineHeight = std::max(lineHeight, hint.height());
    }
    placeLine();
    return y + lineHeight - rect.y() + margins.bottom();
}

} // namespace Tessaly
