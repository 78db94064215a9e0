#pragma once

#include "core/FilterGroup.h"

#include <QFrame>
#include <QString>
#include <vector>

class QCheckBox;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace Tessaly {

class RuleRowWidget;
class VQDReader;

// One filter group in the filter dock: its name, whether the active dataset uses it, the switch for
// all datasets, and its rules, which every dataset that switches the group on shares. Every change
// is a request to the main window, which owns the groups, naming the group by its id and a rule by
// its position in the group.
class FilterGroupWidget : public QFrame
{
    Q_OBJECT

public:
    FilterGroupWidget(const FilterGroup& group, bool enabledForDataset, VQDReader* reader, bool readColumns,
        QWidget* parent = nullptr);

    int groupId() const { return id; }
    // Whether `group` has the rows this widget shows (same kinds of rules, in order), so that it can
    // be shown by showState() instead of a new widget.
    bool hasLayoutOf(const FilterGroup& group) const;
    // Shows the group's current state without signals. The name is set only when it differs, so
    // that text being typed keeps its cursor.
    void showState(const FilterGroup& group, bool enabledForDataset);
    void setPeerActionsEnabled(bool on);
    // Sets the "Edit" toggle of a polygon row without a signal.
    void setPolygonEditChecked(int ruleIndex, bool on);

Q_SIGNALS:
    void renameRequested(int groupId, QString newName);
    void deleteRequested(int groupId);
    void enableToggled(int groupId, bool enabled);
    void enablePropagateRequested(int groupId, bool enabled);
    void addRuleRequested(int groupId);
    void addPolygonRequested(int groupId);
    void ruleChanged(int groupId, int ruleIndex, Tessaly::FilterRule rule);
    void ruleRemoved(int groupId, int ruleIndex);
    void polygonEditToggled(int groupId, int ruleIndex, bool on);

private:
    void addRow(const FilterRule& rule);
    int rowIndex(const RuleRowWidget* row) const;
    void updatePropagateText();

    int id;
    VQDReader* reader;
    bool readColumns;
    QLineEdit* nameEdit;
    QCheckBox* enableBox;
    QPushButton* propagateButton;
    QVBoxLayout* rowsLayout;
    std::vector<RuleRowWidget*> rows;
};

} // namespace Tessaly
