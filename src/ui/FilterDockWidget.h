#pragma once

#include <QWidget>

class QLabel;

namespace Tessaly {

struct DatasetEntry;

// The "Filters" dock: the active dataset's rules, its filtering switches and the filter groups.
class FilterDockWidget : public QWidget
{
    Q_OBJECT

public:
    explicit FilterDockWidget(QWidget* parent = nullptr);

    // Shows the rules of a dataset; null detaches the dock ("No dataset selected").
    void setDataset(DatasetEntry* dataset);
    // With more than one dataset the "to all datasets" actions are on offer.
    void setDatasetCount(int count);

    DatasetEntry* dataset() const { return currentDataset; }
    int datasetCount() const { return datasets; }

Q_SIGNALS:
    void filterChanged();

private:
    DatasetEntry* currentDataset = nullptr;
    int datasets = 0;
    QLabel* datasetLabel;
};

} // namespace Tessaly
