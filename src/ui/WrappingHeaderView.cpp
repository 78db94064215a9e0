#include "ui/WrappingHeaderView.h"

#include <QFontMetrics>
#include <algorithm>
#include <climits>

namespace Tessaly {

WrappingHeaderView::WrappingHeaderView(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    // The header hands its alignment to the style as text flags, where word wrap is one.
    setDefaultAlignment(Qt::Alignment(QFlag(Qt::AlignCenter | Qt::TextWordWrap)));
    // A column of another width wraps its title anew, so the header's height is measured again.
    connect(this, &QHeaderView::sectionResized, this, [this](int logicalIndex) {
        if (remeasuring)
            return;
        remeasuring = true;
        headerDataChanged(orientation(), logicalIndex, logicalIndex);
        remeasuring = false;
    });
}

// The style's size for the title on one line tells what it adds around the text; the height then
// follows from the title wrapped into the width the section has now.
QSize WrappingHeaderView::sectionSizeFromContents(int logicalIndex) const
{
    QSize size = QHeaderView::sectionSizeFromContents(logicalIndex);
    if (!model() || sectionResizeMode(logicalIndex) == QHeaderView::ResizeToContents)
        return size;
    const QString text = model()->headerData(logicalIndex, orientation(), Qt::DisplayRole).toString();
    const QFontMetrics metrics = fontMetrics();
    const int horizontalExtra = std::max(0, size.width() - metrics.horizontalAdvance(text));
    const int verticalExtra = std::max(0, size.height() - metrics.height());
    const int available = sectionSize(logicalIndex) - horizontalExtra;
    if (available <= 0)
        return size;
    const QRect wrapped = metrics.boundingRect(QRect(0, 0, available, INT_MAX / 2), Qt::TextWordWrap, text);
    size.setHeight(std::max(size.height(), wrapped.height() + verticalExtra));
    return size;
}

} // namespace Tessaly
