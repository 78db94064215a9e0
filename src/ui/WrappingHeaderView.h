#pragma once

#include <QHeaderView>

namespace Tessaly {

// A horizontal header whose section titles wrap at word boundaries onto further lines instead of
// being cut, the header growing as tall as its longest title needs at the present column widths.
// Titles here are axis labels such as "Position along channel axis [µm]" in a narrow dock.
class WrappingHeaderView : public QHeaderView
{
    Q_OBJECT

public:
    explicit WrappingHeaderView(QWidget* parent = nullptr);

protected:
    QSize sectionSizeFromContents(int logicalIndex) const override;

private:
    bool remeasuring = false;
};

} // namespace Tessaly
