#pragma once

#include <QWidget>

namespace Tessaly {

struct DatasetEntry;

// The "Calculations" dock: where the user starts the derived-feature calculations of a dataset.
class CalculationsDockWidget : public QWidget
{
    Q_OBJECT

public:
    explicit CalculationsDockWidget(QWidget* parent = nullptr);

    // The dataset the calculations act on; null detaches the dock.
    void setDataset(DatasetEntry* dataset);
    DatasetEntry* dataset() const { return currentDataset; }

private:
    DatasetEntry* currentDataset = nullptr;
};

} // namespace Tessaly
