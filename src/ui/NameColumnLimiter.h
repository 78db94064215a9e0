#pragma once

#include <QObject>

class QAbstractItemView;
class QWidget;

namespace Tessaly {

// Keeps the first column of a two-column name/value view as wide as its names, but never wider than
// a share of the view, so that long names can't push the values out of sight. It follows the view's
// size; call fit() after the contents change.
class NameColumnLimiter : public QObject
{
    Q_OBJECT

public:
    // `share` of the view's width, e.g. 0.5, is the most the names get. The limiter belongs to the view.
    NameColumnLimiter(QAbstractItemView* view, double share);

    void fit();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAbstractItemView* view;
    QWidget* viewport;
    double share;
};

} // namespace Tessaly
