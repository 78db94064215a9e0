#include "ui/TwoPartLayout.h"

#include <QFrame>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <utility>

namespace Tessaly {

namespace {
constexpr int gap = 4;
constexpr int lineThickness = 3;
}

TwoPartLayout::TwoPartLayout(QWidget* parent, QWidget* first, QWidget* second, bool withLine)
    : QLayout(parent)
    , lineSpace(withLine ? lineThickness : 0)
{
    line = new QFrame(parent);
    line->setVisible(withLine);
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
        = firstItem->minimumSize().width() + secondItem->minimumSize().width() + 2 * gap + lineSpace;
    const int hint = firstItem->sizeHint().width() + secondItem->sizeHint().width() + 2 * gap + lineSpace;
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
        const std::pair<int, int> widths = sideBySideWidths(inner);
        height = std::max(partHeight(firstItem, widths.first), partHeight(secondItem, widths.second));
    } else {
        height = partHeight(firstItem, inner) + partHeight(secondItem, inner) + 2 * gap + lineSpace;
    }
    return height + m.top() + m.bottom();
}

// The height is that of the arrangement last made, so that a parent which doesn't ask for heights
// by width still leaves room for two stacked parts.
QSize TwoPartLayout::minimumSize() const
{
    const QMargins m = contentsMargins();
    const QSize first = firstItem->minimumSize();
    const QSize second = secondItem->minimumSize();
    const int width = std::max(first.width(), second.width());
    const int height = sideBySide ? std::max(first.height(), second.height())
                                  : first.height() + second.height() + 2 * gap + lineSpace;
    return QSize(width + m.left() + m.right(), height + m.top() + m.bottom());
}

QSize TwoPartLayout::sizeHint() const
{
    const QMargins m = contentsMargins();
    const int height = std::max(firstItem->sizeHint().height(), secondItem->sizeHint().height());
    return QSize(widthsNeeded().height() + m.left() + m.right(), height + m.top() + m.bottom());
}

// Side by side, each part gets its preferred width as far as there is room, the first part any
// surplus up to its preferred width.
std::pair<int, int> TwoPartLayout::sideBySideWidths(int innerWidth) const
{
    const int room = innerWidth - 2 * gap - lineSpace;
    const int secondWidth = std::clamp(secondItem->sizeHint().width(), secondItem->minimumSize().width(),
        std::max(secondItem->minimumSize().width(), room - firstItem->minimumSize().width()));
    const int firstWidth = std::min(
        room - secondWidth, std::max(firstItem->sizeHint().width(), firstItem->minimumSize().width()));
    return { firstWidth, secondWidth };
}

// Stacked, a part that grows takes the full width, any other its preferred width.
void TwoPartLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    const QRect area = contentsRect();
    const bool wasSideBySide = sideBySide;
    sideBySide = sideBySideAt(rect.width());
    // The minimum height changes with the arrangement: the parents measure again afterwards.
    if (sideBySide != wasSideBySide)
        QTimer::singleShot(0, this, [this] {
            invalidate();
            if (QWidget* owner = parentWidget())
                owner->updateGeometry();
        });
    line->setFrameShape(sideBySide ? QFrame::VLine : QFrame::HLine);
    if (sideBySide) {
        const auto [firstWidth, secondWidth] = sideBySideWidths(area.width());
        firstItem->setGeometry(QRect(area.left(), area.top(), firstWidth, area.height()));
        const int lineX = area.left() + firstWidth + gap;
        lineItem->setGeometry(QRect(lineX, area.top(), lineSpace, area.height()));
        secondItem->setGeometry(QRect(lineX + lineSpace + gap, area.top(), secondWidth, area.height()));
    } else {
        // A part that doesn't grow keeps its preferred width, on the left.
        const auto widthOf = [&](const QLayoutItem* item) {
            if (item->expandingDirections() & Qt::Horizontal)
                return area.width();
            return std::min(area.width(), std::max(item->sizeHint().width(), item->minimumSize().width()));
        };
        const int firstHeight = partHeight(firstItem, area.width());
        firstItem->setGeometry(QRect(area.left(), area.top(), widthOf(firstItem), firstHeight));
        const int lineY = area.top() + firstHeight + gap;
        lineItem->setGeometry(QRect(area.left(), lineY, area.width(), lineSpace));
        const int secondY = lineY + lineSpace + gap;
        secondItem->setGeometry(
            QRect(area.left(), secondY, widthOf(secondItem), std::max(0, area.bottom() + 1 - secondY)));
    }
}

} // namespace Tessaly
