#pragma once

#include "core/FilterGroup.h"
#include "core/FilterRule.h"

#include <QString>
#include <QWidget>
#include <vector>

class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace Tessaly {

struct DatasetEntry;
class FilterGroupWidget;
class RuleRowWidget;
class VQDReader;

// The "Filters" dock: edits the active dataset's filter in place (its rules in row order, its
// switch and "Show Excluded Events") and shows the filter groups with the dataset's switch for each.
// Whatever concerns other datasets or the groups themselves goes out as a request to the main
// window; a rule is named by its row, which is its index in the dataset's rules.
class FilterDockWidget : public QWidget
{
    Q_OBJECT

public:
    explicit FilterDockWidget(QWidget* parent = nullptr);

    // Shows the rules of a dataset afresh; null detaches the dock ("No dataset selected").
    void setDataset(DatasetEntry* dataset);
    // With more than one dataset the "to all datasets" actions are on offer.
    void setDatasetCount(int count);
    // Shown in its own words below the buttons.
    void setEventCounts(qulonglong shown, qulonglong total);
    // The group widgets for the active dataset; widgets of the same shape are updated in place.
    void setFilterGroups(const std::vector<FilterGroup*>& groups, VQDReader* reader);

    DatasetEntry* dataset() const { return currentDataset; }
    int datasetCount() const { return datasets; }
    int ruleRowCount() const { return static_cast<int>(rows.size()); }
    RuleRowWidget* ruleRow(int index) const;
    FilterGroupWidget* groupWidget(int groupId) const;

    // Operations of the main window on a row, after it has changed the other datasets.
    void setRulePropagationId(int ruleIndex, const std::string& id);
    // Sets the row's enable box without a signal and stores the rules.
    void setRuleChecked(int ruleIndex, bool on);
    void removeRuleRow(int ruleIndex);
    void setRuleHighlights(int ruleIndex, bool parametersDiffer, bool enabledDiffers);
    // Lights the two "... in All Datasets" buttons where a peer's switch differs.
    void setPeerHighlights(bool enabledDiffers, bool combineModeDiffers);
    // Toggles without signals, for the plot to report the end of drawing or editing.
    void setPolygonDrawChecked(bool on);
    void setPolygonEditChecked(int ruleIndex, bool on);
    void setGroupPolygonEditChecked(int groupId, int ruleIndex, bool on);
    bool isPolygonDrawChecked() const;
    bool isPolygonEditChecked(int ruleIndex) const;

    // Writes every row's rule into the dataset's filter, in row order.
    void storeRules();

Q_SIGNALS:
    void filterChanged();
    void applyToAllRequested();
    void applyRuleToAll(int ruleIndex);
    void updateRuleToAll(int ruleIndex);
    void uncheckRuleInAll(int ruleIndex);
    void checkRuleInAll(int ruleIndex);
    void deleteRuleFromAll(int ruleIndex);
    void enabledChangedForAll(bool enabled);
    void combineModeChangedForAll(int mode);
    void polygonDrawRequested();
    void polygonDrawCancelRequested();
    void polygonEditRequested(int ruleIndex, bool on);
    void importMeasurementFiltersRequested(bool toAll);
    void addFilterGroupRequested();
    void renameFilterGroupRequested(int groupId, QString newName);
    void deleteFilterGroupRequested(int groupId);
    void groupEnableChanged(int groupId, bool enabled);
    void groupEnablePropagateRequested(int groupId, bool enabled);
    void addRuleToGroupRequested(int groupId);
    void addPolygonToGroupRequested(int groupId);
    void groupRuleChanged(int groupId, int ruleIndex, Tessaly::FilterRule rule);
    void groupRuleRemoved(int groupId, int ruleIndex);
    void groupPolygonEditRequested(int groupId, int ruleIndex, bool on);
    void importGroupsRequested();
    void exportGroupsRequested();

private Q_SLOTS:
    void onAddRule();
    void onRuleChanged();
    void onCombineModeChanged();
    void onDatasetFilterToggled(bool checked);

private:
    QWidget* createButtonRow();
    void addRow(RuleRowWidget* row);
    void removeRow(int index);
    void clearRows();
    int rowIndex(const QObject* row) const;
    void rebuildGroups();
    void updateSwitchTexts();
    bool readsColumns() const;
    VQDReader* reader() const;

    DatasetEntry* currentDataset = nullptr;
    int datasets = 0;
    // Copies of the groups last given, so that a change of dataset can show them at once.
    std::vector<FilterGroup> groupCopies;

    QGroupBox* filterBox;
    QCheckBox* enabledBox;
    QPushButton* enabledForAllButton;
    QCheckBox* excludedBox;
    QPushButton* excludedForAllButton;
    QVBoxLayout* rulesLayout;
    QVBoxLayout* groupsLayout;
    QPushButton* polygonButton;
    QLabel* countsLabel;
    std::vector<RuleRowWidget*> rows;
    // separators[i] lies between rows i and i + 1.
    std::vector<QFrame*> separators;
    std::vector<FilterGroupWidget*> groupWidgets;
    VQDReader* groupReader = nullptr;
    bool groupReadsColumns = false;
};

} // namespace Tessaly

// Group rules travel by value in the signals of the dock and its group widgets, which name the type
// in full so that the name moc records is the registered one.
Q_DECLARE_METATYPE(Tessaly::FilterRule)
