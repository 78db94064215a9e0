#include "ui/HtmlItemDelegate.h"

#include <QPainter>
#include <QTextDocument>

namespace Tessaly {

namespace {
constexpr int textMargin = 4;
}

void HtmlItemDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    painter->save();
    // The style sheet's colours don't reach a delegate; the palette's highlight does.
    if (opt.state & QStyle::State_Selected)
        painter->fillRect(opt.rect, opt.palette.brush(QPalette::Active, QPalette::Highlight));
    QTextDocument document;
    document.setDefaultFont(opt.font);
    document.setHtml(opt.text);
    painter->translate(opt.rect.topLeft() + QPoint(textMargin, 0));
    document.drawContents(painter, QRectF(0, 0, opt.rect.width() - 2 * textMargin, opt.rect.height()));
    painter->restore();
}

QSize HtmlItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    QTextDocument document;
    document.setDefaultFont(opt.font);
    document.setHtml(opt.text);
    document.setTextWidth(-1);
    return QSize(
        static_cast<int>(document.idealWidth()) + 2 * textMargin, static_cast<int>(document.size().height()));
}

} // namespace Tessaly
