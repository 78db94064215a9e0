#include "ui/TwoPartLayout.h"

#include <QFrame>
#include <QWidget>
#include <algorithm>

namespace Tessaly {

namespace {
constexpr int gap = 6;
constexpr int lineThickness = 3;
}

TwoPartLayout::TwoPartLayout(QWidget* parent, QWidget* first, QWidget* second)
    : QLayout(parent)
{
    line = new QFrame(parent);
    line->setFrameShadow(QFrame::Sunken);
    line->setFrameShape(QFrame::VLine);
    addChildWidget(first);
    addChildWidget(line);
    addChildWidget(second);
    firstItem = new QWidgetItem(first);
    lineItem = new QWidgetItem(line);
    secondItem = new QWidgetItem(second);
}

TwoPartLayout::~TwoPartLayout()
{
    delete firstItem;
    delete lineItem;
    delete secondItem;
}

// The three items are fixed at construction.
void TwoPartLayout::addItem(QLayoutItem*) { }

int TwoPartLayout::count() const
{
    return 3;
}

QLayoutItem* TwoPartLayout::itemAt(int index) const
{
    switch (index) {
    case 0:
        return firstItem;
    case 1:
        return lineItem;
    case 2:
        return secondItem;
    default:
        return nullptr;
    }
}

QLayoutItem* TwoPartLayout::takeAt(int)
{
    return nullptr;
}

Qt::Orientations TwoPartLayout::expandingDirections() const
{
    return Qt::Horizontal;
}

bool TwoPartLayout::hasHeightForWidth() const
{
    return true;
}

// Width of the two parts at their minimum (width) and as they would like to be (height), without
// margins.
QSize TwoPartLayout::widthsNeeded() const
{
    const int minimum
        = firstItem->minimumSize().width() + secondItem->minimumSize().width() + 2 * gap + lineThickness;
    const int hint = firstItem->sizeHint().width() + secondItem->sizeHint().width() + 2 * gap + lineThickness;
    return QSize(minimum, hint);
}

bool TwoPartLayout::sideBySideAt(int width) const
{
    const QMargins m = contentsMargins();
    return width - m.left() - m.right() >= widthsNeeded().width();
}

int TwoPartLayout::partHeight(const QLayoutItem* item, int width) const
{
    return item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
}

int TwoPartLayout::heightForWidth(int width) const
{
    const QMargins m = contentsMargins();
    const int inner = width - m.left() - m.right();
    int height = 0;
    if (sideBySideAt(width)) {
        height = std::max(partHeight(firstItem, firstItem->sizeHint().width()),
            partHeight(secondItem, secondItem->sizeHint().width()));
    } else {
        height = partHeight(firstItem, inner) + partHeight(secondItem, inner) + 2 * gap + lineThickness;
    }
    return height + m.top() + m.bottom();
}

QSize TwoPartLayout::minimumSize() const
{
    const QMargins m = contentsMargins();
    const int width = std::max(firstItem->minimumSize().width(), secondItem->minimumSize().width());
    const int height = std::max(firstItem->minimumSize().height(), secondItem->minimumSize().height());
    return QSize(width + m.left() + m.right(), height + m.top() + m.bottom());
}

QSize TwoPartLayout::sizeHint() const
{
    const QMargins m = contentsMargins();
    const int height = std::max(firstItem->sizeHint().height(), secondItem->sizeHint().height());
    return QSize(widthsNeeded().height() + m.left() + m.right(), height + m.top() + m.bottom());
}

// Side by side, each part gets its preferred width as far as there is room, the first part any
// surplus; stacked, both take the full width at their natural height.
void TwoPartLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    const QRect area = contentsRect();
    sideBySide = sideBySideAt(rect.width());
    line->setFrameShape(sideBySide ? QFrame::VLine : QFrame::HLine);
    if (sideBySide) {
        const int room = area.width() - 2 * gap - lineThickness;
        const int secondWidth = std::clamp(secondItem->sizeHint().width(), secondItem->minimumSize().width(),
            std::max(secondItem->minimumSize().width(), room - firstItem->minimumSize().width()));
        const int firstWidth = std::min(
            room - secondWidth, std::max(firstItem->sizeHint().width(), firstItem->minimumSize().width()));
        firstItem->setGeometry(QRect(area.left(), area.top(), firstWidth, area.height()));
        const int lineX = area.left() + firstWidth + gap;
        lineItem->setGeometry(QRect(lineX, area.top(), lineThickness, area.height()));
        secondItem->setGeometry(QRect(lineX + lineThickness + gap, area.top(), secondWidth, area.height()));
    } else {
        const int firstHeight = partHeight(firstItem, area.width());
        firstItem->setGeometry(QRect(area.left(), area.top(), area.width(), firstHeight));
        const int lineY = area.top() + firstHeight + gap;
        lineItem->setGeometry(QRect(area.left(), lineY, area.width(), lineThickness));
        const int secondY = lineY + lineThickness + gap;
        secondItem->setGeometry(
            QRect(area.left(), secondY, area.width(), std::max(0, area.bottom() + 1 - secondY)));
    }
}

} // namespace Tessaly
