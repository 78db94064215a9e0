#pragma once

#include <QListWidget>

namespace Tessaly {

// The flat list of loaded datasets, one row per dataset in the order of the session.
class DatasetListWidget : public QListWidget
{
    Q_OBJECT

public:
    explicit DatasetListWidget(QWidget* parent = nullptr);
};

} // namespace Tessaly
