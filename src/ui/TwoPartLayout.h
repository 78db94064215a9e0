#pragma once

#include <QLayout>
#include <utility>

class QFrame;

namespace Tessaly {

// Two parts side by side with a vertical line between them where the width allows both at their
// minimum size, otherwise one above the other with a horizontal line. So a settings panel keeps
// every control whole on a laptop screen instead of pushing the window wider than the screen. Its
// minimum width is that of the wider part; its height follows from the width it is given.
class TwoPartLayout : public QLayout
{
public:
    // The parts and the line become children of `parent`, which gets this layout. Without a line
    // the parts are only set apart by a gap.
    TwoPartLayout(QWidget* parent, QWidget* first, QWidget* second, bool withLine = true);
    ~TwoPartLayout() override;

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

    // True when the parts lie side by side at the given width (of the layout's rectangle).
    bool sideBySideAt(int width) const;
    bool isSideBySide() const { return sideBySide; }

private:
    int partHeight(const QLayoutItem* item, int width) const;
    std::pair<int, int> sideBySideWidths(int innerWidth) const;
    QSize widthsNeeded() const;

    QLayoutItem* firstItem = nullptr;
    QLayoutItem* secondItem = nullptr;
    QLayoutItem* lineItem = nullptr;
    QFrame* line = nullptr;
    int lineSpace = 0;
    bool sideBySide = true;
};

} // namespace Tessaly
