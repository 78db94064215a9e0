#include "ui/FilterGroupWidget.h"

#include "ui/FilterDockTexts.h"
#include "ui/FilterRuleWidget.h"
#include "ui/FlowLayout.h"
#include "ui/PolygonRuleWidget.h"

#include <QCheckBox>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace Tessaly {

namespace {
QPushButton* makeButton(const QString& text, const QString& toolTip, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setToolTip(toolTip);
    button->setStyleSheet(FilterDockTexts::normalButtonSheet);
    return button;
}

// Room for the style sheet's padding, which the size hint leaves out.
void fitText(QPushButton* button, const QString& one, const QString& other = QString())
{
    const QFontMetrics metrics(button->font());
    button->setMinimumWidth(std::max(metrics.horizontalAdvance(one), metrics.horizontalAdvance(other)) + 24);
}
} // namespace

FilterGroupWidget::FilterGroupWidget(
    const FilterGroup& group, bool enabledForDataset, VQDReader* reader, bool readColumns, QWidget* parent)
    : QFrame(parent)
    , id(group.id)
    , reader(reader)
    , readColumns(readColumns)
    , nameEdit(new QLineEdit(QString::fromStdString(group.name), this))
    , enableBox(new QCheckBox(this))
    , propagateButton(makeButton(QString(), FilterDockTexts::groupPropagateToolTip, this))
    , rowsLayout(new QVBoxLayout)
{
    setFrameShape(QFrame::StyledPanel);
    enableBox->setChecked(enabledForDataset);
    enableBox->setToolTip(FilterDockTexts::groupEnableToolTip);
    auto* deleteButton = new QToolButton(this);
    deleteButton->setText(FilterDockTexts::removeButton);
    deleteButton->setToolTip(FilterDockTexts::deleteGroupToolTip);
    deleteButton->setFixedWidth(20);
    deleteButton->setAutoRaise(true);
    QPushButton* addRuleButton
        = makeButton(FilterDockTexts::addRule, FilterDockTexts::groupAddRuleToolTip, this);
    QPushButton* addPolygonButton
        = makeButton(FilterDockTexts::addPolygon, FilterDockTexts::groupAddPolygonToolTip, this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(3);
    auto* header = new QHBoxLayout;
    header->addWidget(enableBox);
    header->addWidget(nameEdit, 1);
    header->addWidget(deleteButton);
    auto* actionRow = new QWidget(this);
    auto* actions = new FlowLayout(actionRow);
    actions->addWidget(propagateButton);
    actions->addWidget(addRuleButton);
    actions->addWidget(addPolygonButton);
    fitText(propagateButton, FilterDockTexts::groupCheckInAll, FilterDockTexts::groupUncheckInAll);
    fitText(addRuleButton, FilterDockTexts::addRule);
    fitText(addPolygonButton, FilterDockTexts::addPolygon);
    rowsLayout->setContentsMargins(8, 0, 0, 0);
    rowsLayout->setSpacing(2);
    layout->addLayout(header);
    layout->addWidget(actionRow);
    layout->addLayout(rowsLayout);
    for (const FilterRule& rule : group.rules)
        addRow(rule);
    updatePropagateText();

    connect(nameEdit, &QLineEdit::editingFinished, this, [this] {
        if (nameEdit->isModified()) {
            nameEdit->setModified(false);
            emit renameRequested(id, nameEdit->text());
        }
    });
    connect(enableBox, &QCheckBox::toggled, this, [this](bool on) {
        updatePropagateText();
        emit enableToggled(id, on);
    });
    connect(propagateButton, &QPushButton::clicked, this,
        [this] { emit enablePropagateRequested(id, enableBox->isChecked()); });
    connect(deleteButton, &QToolButton::clicked, this, [this] { emit deleteRequested(id); });
    connect(addRuleButton, &QPushButton::clicked, this, [this] { emit addRuleRequested(id); });
    connect(addPolygonButton, &QPushButton::clicked, this, [this] { emit addPolygonRequested(id); });
}

bool FilterGroupWidget::hasLayoutOf(const FilterGroup& group) const
{
    if (group.id != id || group.rules.size() != rows.size())
        return false;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const bool polygonRow = qobject_cast<PolygonRuleWidget*>(rows[i]) != nullptr;
        if (polygonRow != (group.rules[i].type == PolygonRule))
            return false;
    }
    return true;
}

void FilterGroupWidget::showState(const FilterGroup& group, bool enabledForDataset)
{
    const QString name = QString::fromStdString(group.name);
    if (nameEdit->text() != name) {
        const QSignalBlocker blocker(nameEdit);
        nameEdit->setText(name);
    }
    {
        const QSignalBlocker blocker(enableBox);
        enableBox->setChecked(enabledForDataset);
    }
    updatePropagateText();
    for (std::size_t i = 0; i < rows.size() && i < group.rules.size(); ++i) {
        if (auto* range = qobject_cast<FilterRuleWidget*>(rows[i]))
            range->setRule(group.rules[i]);
        else if (auto* polygon = qobject_cast<PolygonRuleWidget*>(rows[i]))
            polygon->setRule(group.rules[i]);
    }
}

void FilterGroupWidget::setPeerActionsEnabled(bool on)
{
    propagateButton->setEnabled(on);
}

void FilterGroupWidget::setPolygonEditChecked(int ruleIndex, bool on)
{
    if (ruleIndex < 0 || ruleIndex >= static_cast<int>(rows.size()))
        return;
    if (auto* polygon = qobject_cast<PolygonRuleWidget*>(rows[static_cast<std::size_t>(ruleIndex)]))
        polygon->setEditChecked(on);
}

void FilterGroupWidget::addRow(const FilterRule& rule)
{
    RuleRowWidget* row = nullptr;
    if (rule.type == PolygonRule) {
        auto* polygon = new PolygonRuleWidget(reader, this);
        polygon->setRule(rule);
        connect(polygon, &PolygonRuleWidget::editToggled, this,
            [this, polygon](bool on) { emit polygonEditToggled(id, rowIndex(polygon), on); });
        row = polygon;
    } else {
        auto* range = new FilterRuleWidget(reader, readColumns, this);
        range->setRule(rule);
        row = range;
    }
    row->setInGroup(true);
    rows.push_back(row);
    rowsLayout->addWidget(row);
    connect(row, &RuleRowWidget::ruleChanged, this,
        [this, row] { emit ruleChanged(id, rowIndex(row), row->rule()); });
    connect(row, &RuleRowWidget::removeRequested, this, [this, row] { emit ruleRemoved(id, rowIndex(row)); });
}

int FilterGroupWidget::rowIndex(const RuleRowWidget* row) const
{
    const auto found = std::find(rows.begin(), rows.end(), row);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

void FilterGroupWidget::updatePropagateText()
{
    propagateButton->setText(
        enableBox->isChecked() ? FilterDockTexts::groupCheckInAll : FilterDockTexts::groupUncheckInAll);
}

} // namespace Tessaly
