#pragma once

#include <QStyledItemDelegate>

namespace Tessaly {

// Draws an item's text as rich text, so that dataset rows can show a bold name beside plain details.
class HtmlItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace Tessaly
