#pragma once

#include <QLayout>
#include <QList>

namespace Tessaly {

// Lays its items out left to right and starts a new line where the next one would not fit, so that
// a row of buttons stays whole in a narrow dock instead of clipping its texts.
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget* parent = nullptr, int spacing = 3);
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(items.size()); }
    QLayoutItem* itemAt(int index) const override { return items.value(index); }
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return arrange(QRect(0, 0, width, 0), false); }
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    // Places the visible items within `rect` (only measures unless `apply`); returns the height used.
    int arrange(const QRect& rect, bool apply) const;

    QList<QLayoutItem*> items;
};

} // namespace Tessaly
