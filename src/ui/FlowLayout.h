#pragma once

#include <QLayout>
#include <QList>

namespace Tessaly {

// Lays its items out left to right and starts a new line where the next one would not fit, so that
// a row of controls keeps every text whole in a narrow panel instead of cutting it. Its minimum
// width is that of its widest item; its height follows from the width it is given.
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget* parent = nullptr, int horizontalSpacing = 6, int verticalSpacing = 4);
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;

    Qt::Orientations expandingDirections() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect& rect) override;

private:
    // Places the items in `rect` (or only measures, when `apply` is false); returns the height used.
    int arrange(const QRect& rect, bool apply) const;

    QList<QLayoutItem*> items;
    // Height of the lines at the width of the last arrangement.
    int arrangedHeight = 0;
    int hSpacing;
    int vSpacing;
};

} // namespace Tessaly
