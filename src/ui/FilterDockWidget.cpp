#include "ui/FilterDockWidget.h"

#include "core/DatasetEntry.h"
#include "ui/FilterDockTexts.h"
#include "ui/FilterGroupWidget.h"
#include "ui/FilterRuleWidget.h"
#include "ui/FlowLayout.h"
#include "ui/PolygonRuleWidget.h"

#include <QCheckBox>
#include <QFontMetrics>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace Tessaly {

namespace {

QPushButton* makeButton(const QString& text, const QString& toolTip, const char* name, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setToolTip(toolTip);
    button->setObjectName(QString::fromLatin1(name));
    button->setStyleSheet(FilterDockTexts::normalButtonSheet);
    return button;
}

QFrame* makeSeparator(QWidget* parent)
{
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFixedHeight(1);
    line->setStyleSheet(
        QStringLiteral("background-color: %1; border: none;").arg(FilterDockTexts::separatorColor));
    return line;
}

// Old widgets may be the sender of the signal that is being handled: they go later.
void discard(QWidget* widget)
{
    widget->hide();
    widget->setParent(nullptr);
    widget->deleteLater();
}

} // namespace

FilterDockWidget::FilterDockWidget(QWidget* parent)
    : QWidget(parent)
    , filterBox(new QGroupBox(FilterDockTexts::groupBoxTitle, this))
    , enabledBox(new QCheckBox(FilterDockTexts::filteringEnabled, filterBox))
    , enabledForAllButton(makeButton(FilterDockTexts::enableInAll, FilterDockTexts::enabledForAllToolTip,
          "enabledForAllButton", filterBox))
    , excludedBox(new QCheckBox(FilterDockTexts::showExcluded, filterBox))
    , excludedForAllButton(makeButton(FilterDockTexts::hideExcludedInAll,
          FilterDockTexts::combineModeForAllToolTip, "excludedForAllButton", filterBox))
    , rulesLayout(new QVBoxLayout)
    , groupsLayout(new QVBoxLayout)
    , polygonButton(nullptr)
    , countsLabel(new QLabel(FilterDockTexts::noDataset, filterBox))
{
    qRegisterMetaType<FilterRule>();
    enabledBox->setObjectName(QStringLiteral("filteringEnabledCheckBox"));
    enabledBox->setChecked(true);
    excludedBox->setObjectName(QStringLiteral("showExcludedCheckBox"));
    excludedBox->setToolTip(FilterDockTexts::showExcludedToolTip);
    countsLabel->setObjectName(QStringLiteral("filterCountsLabel"));
    countsLabel->setStyleSheet(QStringLiteral("color: gray; font-style: italic;"));
    countsLabel->setWordWrap(true);

    auto* content = new QWidget;
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins(2, 2, 2, 2);
    rulesLayout->setSpacing(2);
    groupsLayout->setSpacing(4);
    contentLayout->addLayout(rulesLayout);
    contentLayout->addLayout(groupsLayout);
    contentLayout->addStretch(1);
    auto* scroll = new QScrollArea(filterBox);
    scroll->setObjectName(QStringLiteral("filterRulesScrollArea"));
    scroll->setWidgetResizable(true);
    scroll->setMinimumHeight(100);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(content);

    // Each button takes the width of the longer of its two texts, so that it neither clips its text
    // (the style sheet's padding is not counted in its size hint) nor jumps when the text changes.
    const auto fitTexts = [](QPushButton* button, const QString& one, const QString& other) {
        const QFontMetrics metrics(button->font());
        button->setMinimumWidth(
            std::max(metrics.horizontalAdvance(one), metrics.horizontalAdvance(other)) + 24);
    };
    fitTexts(enabledForAllButton, FilterDockTexts::enableInAll, FilterDockTexts::disableInAll);
    fitTexts(excludedForAllButton, FilterDockTexts::showExcludedInAll, FilterDockTexts::hideExcludedInAll);
    // A switch and its button for all datasets share a line where the dock is wide enough.
    const auto switchRow = [this](QCheckBox* box, QPushButton* button) {
        auto* row = new QWidget(filterBox);
        auto* flow = new FlowLayout(row, 6);
        flow->addWidget(box);
        flow->addWidget(button);
        return row;
    };
    auto* boxLayout = new QVBoxLayout(filterBox);
    boxLayout->setContentsMargins(6, 6, 6, 6);
    boxLayout->addWidget(switchRow(enabledBox, enabledForAllButton));
    boxLayout->addWidget(switchRow(excludedBox, excludedForAllButton));
    boxLayout->addWidget(scroll, 1);
    boxLayout->addWidget(createButtonRow());
    boxLayout->addWidget(countsLabel);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(filterBox);
    filterBox->setEnabled(false);

    connect(enabledBox, &QCheckBox::toggled, this, &FilterDockWidget::onDatasetFilterToggled);
    connect(excludedBox, &QCheckBox::toggled, this, &FilterDockWidget::onCombineModeChanged);
    connect(enabledForAllButton, &QPushButton::clicked, this,
        [this] { emit enabledChangedForAll(enabledBox->isChecked()); });
    connect(excludedForAllButton, &QPushButton::clicked, this,
        [this] { emit combineModeChangedForAll(excludedBox->isChecked() ? 1 : 0); });
    setDatasetCount(0);
}

QWidget* FilterDockWidget::createButtonRow()
{
    auto* row = new QWidget(filterBox);
    // The buttons wrap onto a second line in a narrow dock rather than widen it.
    auto* layout = new FlowLayout(row, 4);
    layout->setContentsMargins(0, 0, 0, 0);
    QPushButton* addRuleButton
        = makeButton(FilterDockTexts::addRule, FilterDockTexts::addRuleToolTip, "addRuleButton", row);
    polygonButton = makeButton(
        FilterDockTexts::addPolygon, FilterDockTexts::addPolygonToolTip, "addPolygonButton", row);
    polygonButton->setCheckable(true);
    QPushButton* addGroupButton
        = makeButton(FilterDockTexts::addGroup, FilterDockTexts::addGroupToolTip, "addGroupButton", row);

    auto* moreButton = new QToolButton(row);
    moreButton->setObjectName(QStringLiteral("moreFilterActionsButton"));
    moreButton->setText(FilterDockTexts::moreActions);
    moreButton->setToolTip(FilterDockTexts::moreActionsToolTip);
    moreButton->setPopupMode(QToolButton::InstantPopup);
    moreButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto* menu = new QMenu(moreButton);
    menu->setToolTipsVisible(true);
    QAction* applyAll = menu->addAction(FilterDockTexts::applyFilterToAll);
    applyAll->setObjectName(QStringLiteral("applyFilterToAllAction"));
    applyAll->setToolTip(FilterDockTexts::applyFilterToAllToolTip);
    menu->addSeparator();
    QMenu* importMenu = menu->addMenu(FilterDockTexts::importMeasurementFilters);
    importMenu->setToolTipsVisible(true);
    QAction* importActive = importMenu->addAction(FilterDockTexts::forActiveDataset);
    importActive->setToolTip(FilterDockTexts::forActiveDatasetToolTip);
    QAction* importAll = importMenu->addAction(FilterDockTexts::forAllDatasets);
    importAll->setToolTip(FilterDockTexts::forAllDatasetsToolTip);
    menu->addSeparator();
    QAction* importGroups = menu->addAction(FilterDockTexts::importGroups);
    QAction* exportGroups = menu->addAction(FilterDockTexts::exportGroups);
    moreButton->setMenu(menu);
    // The peer action is offered only when there are peers; it is decided when the menu opens.
    connect(menu, &QMenu::aboutToShow, this, [this, applyAll] { applyAll->setEnabled(datasets > 1); });

    layout->addWidget(addRuleButton);
    layout->addWidget(polygonButton);
    layout->addWidget(addGroupButton);
    layout->addWidget(moreButton);

    connect(addRuleButton, &QPushButton::clicked, this, &FilterDockWidget::onAddRule);
    connect(polygonButton, &QPushButton::toggled, this, [this](bool on) {
        if (on)
            emit polygonDrawRequested();
        else
            emit polygonDrawCancelRequested();
    });
    connect(addGroupButton, &QPushButton::clicked, this, &FilterDockWidget::addFilterGroupRequested);
    connect(applyAll, &QAction::triggered, this, &FilterDockWidget::applyToAllRequested);
    connect(
        importActive, &QAction::triggered, this, [this] { emit importMeasurementFiltersRequested(false); });
    connect(importAll, &QAction::triggered, this, [this] { emit importMeasurementFiltersRequested(true); });
    connect(importGroups, &QAction::triggered, this, &FilterDockWidget::importGroupsRequested);
    connect(exportGroups, &QAction::triggered, this, &FilterDockWidget::exportGroupsRequested);
    return row;
}

void FilterDockWidget::setDataset(DatasetEntry* dataset)
{
    currentDataset = dataset;
    filterBox->setEnabled(dataset != nullptr);
    clearRows();
    {
        const QSignalBlocker blockEnabled(enabledBox);
        const QSignalBlocker blockExcluded(excludedBox);
        enabledBox->setChecked(!dataset || dataset->filter.isEnabled());
        excludedBox->setChecked(dataset && dataset->filter.combineMode() == ShowExcludedEvents);
    }
    updateSwitchTexts();
    setPolygonDrawChecked(false);
    if (!dataset) {
        countsLabel->setText(FilterDockTexts::noDataset);
        rebuildGroups();
        return;
    }
    countsLabel->setText(FilterDockTexts::noFilterActive);
    VQDReader* source = reader();
    for (const FilterRule& rule : dataset->filter.rules()) {
        if (rule.type == PolygonRule) {
            auto* row = new PolygonRuleWidget(source);
            row->setRule(rule);
            addRow(row);
        } else {
            auto* row = new FilterRuleWidget(source, readsColumns());
            row->setRule(rule);
            addRow(row);
        }
    }
    rebuildGroups();
}

void FilterDockWidget::setDatasetCount(int count)
{
    datasets = count;
    const bool peers = count > 1;
    enabledForAllButton->setEnabled(peers);
    excludedForAllButton->setEnabled(peers);
    for (RuleRowWidget* row : rows)
        row->setPeerActionsEnabled(peers);
    for (FilterGroupWidget* group : groupWidgets)
        group->setPeerActionsEnabled(peers);
}

void FilterDockWidget::setEventCounts(qulonglong shown, qulonglong total)
{
    if (total == 0)
        countsLabel->setText(FilterDockTexts::noEvents);
    else if (shown != total)
        countsLabel->setText(FilterDockTexts::eventsShown.arg(shown).arg(total).arg(
            100.0 * static_cast<double>(shown) / static_cast<double>(total), 0, 'f', 1));
    else
        countsLabel->setText(FilterDockTexts::allEventsShown.arg(total));
}

void FilterDockWidget::setFilterGroups(const std::vector<FilterGroup*>& groups, VQDReader*)
{
    groupCopies.clear();
    for (const FilterGroup* group : groups) {
        if (group)
            groupCopies.push_back(*group);
    }
    rebuildGroups();
}

RuleRowWidget* FilterDockWidget::ruleRow(int index) const
{
    if (index < 0 || index >= static_cast<int>(rows.size()))
        return nullptr;
    return rows[static_cast<std::size_t>(index)];
}

FilterGroupWidget* FilterDockWidget::groupWidget(int groupId) const
{
    for (FilterGroupWidget* widget : groupWidgets) {
        if (widget->groupId() == groupId)
            return widget;
    }
    return nullptr;
}

void FilterDockWidget::setRulePropagationId(int ruleIndex, const std::string& id)
{
    if (RuleRowWidget* row = ruleRow(ruleIndex))
        row->setPropagationId(id);
}

void FilterDockWidget::setRuleChecked(int ruleIndex, bool on)
{
    if (RuleRowWidget* row = ruleRow(ruleIndex)) {
        row->setRuleChecked(on);
        storeRules();
    }
}

void FilterDockWidget::removeRuleRow(int ruleIndex)
{
    if (ruleRow(ruleIndex)) {
        removeRow(ruleIndex);
        storeRules();
    }
}

void FilterDockWidget::setRuleHighlights(int ruleIndex, bool parametersDiffer, bool enabledDiffers)
{
    if (RuleRowWidget* row = ruleRow(ruleIndex))
        row->setPeerDifferences(parametersDiffer, enabledDiffers);
}

void FilterDockWidget::setPeerHighlights(bool enabledDiffers, bool combineModeDiffers)
{
    enabledForAllButton->setStyleSheet(
        enabledDiffers ? FilterDockTexts::highlightedButtonSheet : FilterDockTexts::normalButtonSheet);
    excludedForAllButton->setStyleSheet(
        combineModeDiffers ? FilterDockTexts::highlightedButtonSheet : FilterDockTexts::normalButtonSheet);
}

void FilterDockWidget::setPolygonDrawChecked(bool on)
{
    const QSignalBlocker blocker(polygonButton);
    polygonButton->setChecked(on);
}

void FilterDockWidget::setPolygonEditChecked(int ruleIndex, bool on)
{
    if (auto* row = qobject_cast<PolygonRuleWidget*>(ruleRow(ruleIndex)))
        row->setEditChecked(on);
}

bool FilterDockWidget::isPolygonDrawChecked() const
{
    return polygonButton->isChecked();
}

bool FilterDockWidget::isPolygonEditChecked(int ruleIndex) const
{
    const auto* row = qobject_cast<const PolygonRuleWidget*>(ruleRow(ruleIndex));
    return row && row->isEditChecked();
}

void FilterDockWidget::setGroupPolygonEditChecked(int groupId, int ruleIndex, bool on)
{
    if (FilterGroupWidget* widget = groupWidget(groupId))
        widget->setPolygonEditChecked(ruleIndex, on);
}

void FilterDockWidget::storeRules()
{
    if (!currentDataset)
        return;
    currentDataset->filter.clearRules();
    for (const RuleRowWidget* row : rows)
        currentDataset->filter.addRule(row->rule());
}

void FilterDockWidget::onAddRule()
{
    VQDReader* source = reader();
    if (!currentDataset || !source)
        return;
    auto* row = new FilterRuleWidget(source, true);
    if (row->rule().featureName.empty()) {
        delete row;
        return;
    }
    // A new rule starts with the whole range of its feature, so that it takes nothing away yet.
    row->onFeatureChanged(0);
    addRow(row);
    storeRules();
    emit filterChanged();
}

void FilterDockWidget::onRuleChanged()
{
    storeRules();
    emit filterChanged();
}

void FilterDockWidget::onCombineModeChanged()
{
    updateSwitchTexts();
    if (!currentDataset)
        return;
    currentDataset->filter.setCombineMode(excludedBox->isChecked() ? ShowExcludedEvents : ShowPassingEvents);
    emit filterChanged();
}

void FilterDockWidget::onDatasetFilterToggled(bool checked)
{
    updateSwitchTexts();
    if (!currentDataset)
        return;
    currentDataset->filter.setEnabled(checked);
    emit filterChanged();
}

void FilterDockWidget::addRow(RuleRowWidget* row)
{
    if (!rows.empty()) {
        QFrame* separator = makeSeparator(this);
        separators.push_back(separator);
        rulesLayout->addWidget(separator);
    }
    rows.push_back(row);
    rulesLayout->addWidget(row);
    row->setPeerActionsEnabled(datasets > 1);

    connect(row, &RuleRowWidget::ruleChanged, this, &FilterDockWidget::onRuleChanged);
    connect(row, &RuleRowWidget::removeRequested, this, [this, row] {
        const int index = rowIndex(row);
        if (index < 0)
            return;
        removeRow(index);
        storeRules();
        emit filterChanged();
    });
    connect(row, &RuleRowWidget::applyRuleToAllRequested, this,
        [this, row] { emit applyRuleToAll(rowIndex(row)); });
    connect(row, &RuleRowWidget::updateRuleToAllRequested, this,
        [this, row] { emit updateRuleToAll(rowIndex(row)); });
    connect(row, &RuleRowWidget::uncheckRuleInAllRequested, this,
        [this, row] { emit uncheckRuleInAll(rowIndex(row)); });
    connect(row, &RuleRowWidget::checkRuleInAllRequested, this,
        [this, row] { emit checkRuleInAll(rowIndex(row)); });
    connect(row, &RuleRowWidget::deleteRuleFromAllRequested, this,
        [this, row] { emit deleteRuleFromAll(rowIndex(row)); });
    if (auto* polygon = qobject_cast<PolygonRuleWidget*>(row)) {
        connect(polygon, &PolygonRuleWidget::editToggled, this,
            [this, row](bool on) { emit polygonEditRequested(rowIndex(row), on); });
    }
}

void FilterDockWidget::removeRow(int index)
{
    const auto position = static_cast<std::size_t>(index);
    // The separator before the row goes with it; the first row takes the one after it.
    if (!separators.empty()) {
        const std::size_t separator = position > 0 ? position - 1 : 0;
        discard(separators[separator]);
        separators.erase(separators.begin() + static_cast<std::ptrdiff_t>(separator));
    }
    discard(rows[position]);
    rows.erase(rows.begin() + index);
}

void FilterDockWidget::clearRows()
{
    for (QFrame* separator : separators)
        discard(separator);
    for (RuleRowWidget* row : rows)
        discard(row);
    separators.clear();
    rows.clear();
}

int FilterDockWidget::rowIndex(const QObject* row) const
{
    const auto found = std::find(rows.begin(), rows.end(), row);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

void FilterDockWidget::rebuildGroups()
{
    VQDReader* source = reader();
    const bool sameShape = groupWidgets.size() == groupCopies.size()
        && std::equal(groupCopies.begin(), groupCopies.end(), groupWidgets.begin(),
            [](const FilterGroup& group, const FilterGroupWidget* widget) {
                return widget->hasLayoutOf(group);
            });
    const auto enabledFor = [this](const FilterGroup& group) {
        return currentDataset && currentDataset->groupEnabled.value(group.id, false);
    };
    // Rows list the features of the reader they were made for, so another dataset needs new rows.
    const bool sameSource = source == groupReader && readsColumns() == groupReadsColumns;
    if (sameShape && sameSource) {
        for (std::size_t i = 0; i < groupCopies.size(); ++i)
            groupWidgets[i]->showState(groupCopies[i], enabledFor(groupCopies[i]));
        return;
    }
    for (FilterGroupWidget* widget : groupWidgets)
        discard(widget);
    groupWidgets.clear();
    groupReader = source;
    groupReadsColumns = readsColumns();
    for (const FilterGroup& group : groupCopies) {
        auto* widget = new FilterGroupWidget(group, enabledFor(group), source, readsColumns());
        widget->setPeerActionsEnabled(datasets > 1);
        groupsLayout->addWidget(widget);
        groupWidgets.push_back(widget);
        connect(
            widget, &FilterGroupWidget::renameRequested, this, &FilterDockWidget::renameFilterGroupRequested);
        connect(
            widget, &FilterGroupWidget::deleteRequested, this, &FilterDockWidget::deleteFilterGroupRequested);
        connect(widget, &FilterGroupWidget::enableToggled, this, &FilterDockWidget::groupEnableChanged);
        connect(widget, &FilterGroupWidget::enablePropagateRequested, this,
            &FilterDockWidget::groupEnablePropagateRequested);
        connect(
            widget, &FilterGroupWidget::addRuleRequested, this, &FilterDockWidget::addRuleToGroupRequested);
        connect(widget, &FilterGroupWidget::addPolygonRequested, this,
            &FilterDockWidget::addPolygonToGroupRequested);
        connect(widget, &FilterGroupWidget::ruleChanged, this, &FilterDockWidget::groupRuleChanged);
        connect(widget, &FilterGroupWidget::ruleRemoved, this, &FilterDockWidget::groupRuleRemoved);
        connect(widget, &FilterGroupWidget::polygonEditToggled, this,
            &FilterDockWidget::groupPolygonEditRequested);
    }
}

void FilterDockWidget::updateSwitchTexts()
{
    enabledForAllButton->setText(
        enabledBox->isChecked() ? FilterDockTexts::enableInAll : FilterDockTexts::disableInAll);
    excludedForAllButton->setText(
        excludedBox->isChecked() ? FilterDockTexts::showExcludedInAll : FilterDockTexts::hideExcludedInAll);
}

// Columns of a dataset that is still loading are not read just to format the bounds.
bool FilterDockWidget::readsColumns() const
{
    return currentDataset && currentDataset->featuresLoaded;
}

VQDReader* FilterDockWidget::reader() const
{
    return currentDataset && currentDataset->reader ? currentDataset->reader.get() : nullptr;
}

} // namespace Tessaly
