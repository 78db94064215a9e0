#pragma once

#include "core/FilterRule.h"

#include <QWidget>
#include <string>

class QCheckBox;
class QPushButton;
class QToolButton;

namespace Tessaly {

// What a row of the filter dock has in common, whether it shows a range rule or a polygon: the
// stored rule, its enable box, and the four buttons that carry the rule to the other datasets.
// "Apply to All" shows while the rule is local; once it has a propagation id, "Update in All", the
// check button and "Delete from All" take its place. Rows inside a filter group show none of them.
class RuleRowWidget : public QWidget
{
    Q_OBJECT

public:
    explicit RuleRowWidget(QWidget* parent = nullptr);

    // The rule as the row shows it, with the fields it keeps but doesn't show.
    virtual FilterRule rule() const = 0;

    void setPropagationId(const std::string& id);
    // Sets the enable box without a signal.
    void setRuleChecked(bool on);
    bool isRuleChecked() const;
    // Highlights "Update in All" when a peer's copy has other parameters, the check button when a
    // peer's copy is switched the other way.
    void setPeerDifferences(bool parametersDiffer, bool enabledDiffers);
    // The buttons act on other datasets, so they are enabled only when there are some.
    void setPeerActionsEnabled(bool on);
    // Group rows are shared by all datasets already and have nothing to carry over.
    void setInGroup(bool inGroup);

Q_SIGNALS:
    void ruleChanged();
    void removeRequested();
    void applyRuleToAllRequested();
    void updateRuleToAllRequested();
    void uncheckRuleInAllRequested();
    void checkRuleInAllRequested();
    void deleteRuleFromAllRequested();

public Q_SLOTS:
    // The check button carries the row's own state: "Check in All" while the row is checked.
    void onUncheckCheckClicked();

protected:
    // A row of the buttons, for the subclass to place.
    QWidget* peerButtonRow() const { return peerRow; }
    // The small button that asks to remove the row, for the subclass to place.
    QToolButton* removeRowButton() const { return removeButton; }
    void updateButtons();

    FilterRule stored;
    QCheckBox* enableBox;

private:
    QWidget* peerRow;
    QPushButton* applyButton;
    QPushButton* updateButton;
    QPushButton* checkButton;
    QPushButton* deleteButton;
    QToolButton* removeButton;
    bool inGroup = false;
};

} // namespace Tessaly
