#pragma once

#include <QTreeWidget>

namespace Tessaly {

// The loaded datasets under the folders that hold their files.
class DatasetTreeWidget : public QTreeWidget
{
    Q_OBJECT

public:
    explicit DatasetTreeWidget(QWidget* parent = nullptr);
};

} // namespace Tessaly
