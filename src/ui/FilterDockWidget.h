#pragma once

#include <QSet>
#include <QWidget>

class QLabel;
class QPushButton;

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

    // Polygon gates: the "+ Polygon" toggle and each polygon rule's "Edit" toggle follow what the
    // plot does; the main window sets them without signals when drawing or editing ends there.
    void setPolygonDrawChecked(bool checked);
    bool isPolygonDrawChecked() const;
    void setPolygonEditChecked(int ruleIndex, bool checked);
    bool isPolygonEditChecked(int ruleIndex) const { return editedPolygonRules.contains(ruleIndex); }

Q_SIGNALS:
    void filterChanged();
    void polygonDrawRequested();
    void polygonDrawCancelRequested();
    void polygonEditRequested(int ruleIndex, bool on);
    void addPolygonToGroupRequested(int groupId);
    void groupPolygonEditRequested(int groupId, int ruleIndex, bool on);

private:
    DatasetEntry* currentDataset = nullptr;
    int datasets = 0;
    QLabel* datasetLabel;
    QPushButton* polygonButton;
    QSet<int> editedPolygonRules;
};

} // namespace Tessaly
