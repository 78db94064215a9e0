// Filters across datasets: copies of a rule in several datasets are linked by a propagation id, and
// the active dataset's rules, switches and soft limits can be carried to every other dataset. Every
// operation changes the records first and refreshes last.
#include "core/DatasetEntry.h"
#include "core/FeatureCatalogue.h"
#include "core/FeatureRange.h"
#include "core/SoftLimitRules.h"
#include "ui/FilterDockWidget.h"
#include "ui/FilterOperationTexts.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QUuid>
#include <algorithm>

namespace Tessaly {

namespace {

// Index of the first rule with the id, or -1; an empty id links nothing.
int findLinkedRule(const EventFilter& filter, const std::string& id)
{
    if (id.empty())
        return -1;
    const std::vector<FilterRule>& rules = filter.rules();
    const auto found = std::find_if(
        rules.begin(), rules.end(), [&id](const FilterRule& rule) { return rule.propagationId == id; });
    return found == rules.end() ? -1 : static_cast<int>(found - rules.begin());
}

// NaN differs from everything, itself included.
bool sameValue(double a, double b)
{
    return a == b;
}

// Whether a peer's copy gates differently from the rule, apart from being switched on or off.
bool parametersDiffer(const FilterRule& own, const FilterRule& peer)
{
    if (own.inverted != peer.inverted)
        return true;
    if (own.type != PolygonRule)
        return !sameValue(own.minValue, peer.minValue) || !sameValue(own.maxValue, peer.maxValue);
    if (own.scaleXMode != peer.scaleXMode || own.scaleYMode != peer.scaleYMode
        || own.polygonVertices.size() != peer.polygonVertices.size())
        return true;
    for (std::size_t i = 0; i < own.polygonVertices.size(); ++i) {
        if (!sameValue(own.polygonVertices[i].first, peer.polygonVertices[i].first)
            || !sameValue(own.polygonVertices[i].second, peer.polygonVertices[i].second))
            return true;
    }
    return false;
}

bool hasRuleFeatures(const DatasetEntry& entry, const FilterRule& rule)
{
    if (!entry.reader || !entry.reader->hasFeature(rule.featureName))
        return false;
    return rule.type != PolygonRule || entry.reader->hasFeature(rule.featureNameY);
}

// A new group rule, like a new row of the dock: the first scalar feature over its whole range.
FilterRule firstFeatureRangeRule(VQDReader& reader)
{
    FilterRule rule;
    for (const std::string& name : reader.featureNames()) {
        if (!isScalarFeature(name))
            continue;
        rule.featureName = name;
        if (const auto range = finiteRange(reader.getFeature(name))) {
            rule.minValue = range->first;
            rule.maxValue = range->second;
        }
        break;
    }
    return rule;
}

} // namespace

void MainWindow::connectFilterDock()
{
    FilterDockWidget* dock = filterDock;
    connect(dock, &FilterDockWidget::applyToAllRequested, this, &MainWindow::onApplyFilterToAll);
    connect(dock, &FilterDockWidget::applyRuleToAll, this, &MainWindow::onApplyRuleToAll);
    connect(dock, &FilterDockWidget::updateRuleToAll, this, &MainWindow::onUpdateRuleToAll);
    connect(dock, &FilterDockWidget::uncheckRuleInAll, this, &MainWindow::onUncheckRuleInAll);
    connect(dock, &FilterDockWidget::checkRuleInAll, this, &MainWindow::onCheckRuleInAll);
    connect(dock, &FilterDockWidget::deleteRuleFromAll, this, &MainWindow::onDeleteRuleFromAll);
    connect(dock, &FilterDockWidget::enabledChangedForAll, this, &MainWindow::onEnabledChangedForAll);
    connect(dock, &FilterDockWidget::combineModeChangedForAll, this, &MainWindow::onCombineModeChangedForAll);
    connect(dock, &FilterDockWidget::importMeasurementFiltersRequested, this,
        &MainWindow::onImportMeasurementFilters);
    connect(dock, &FilterDockWidget::addFilterGroupRequested, this, [this] { addFilterGroup(); });
    connect(dock, &FilterDockWidget::renameFilterGroupRequested, this, &MainWindow::renameFilterGroup);
    connect(dock, &FilterDockWidget::deleteFilterGroupRequested, this, &MainWindow::removeFilterGroup);
    connect(dock, &FilterDockWidget::groupEnableChanged, this, [this](int groupId, bool on) {
        if (const DatasetEntry* entry = activeEntry())
            setGroupEnabled(entry->id, groupId, on);
    });
    connect(dock, &FilterDockWidget::groupEnablePropagateRequested, this, &MainWindow::setGroupEnabledInAll);
    connect(dock, &FilterDockWidget::addRuleToGroupRequested, this, [this](int groupId) {
        const DatasetEntry* entry = activeEntry();
        if (entry && entry->reader) {
            const FilterRule rule = firstFeatureRangeRule(*entry->reader);
            if (!rule.featureName.empty())
                addRuleToGroup(groupId, rule);
        }
    });
    connect(dock, &FilterDockWidget::groupRuleChanged, this, &MainWindow::updateRuleInGroup);
    connect(dock, &FilterDockWidget::groupRuleRemoved, this, &MainWindow::removeRuleFromGroup);
    connect(dock, &FilterDockWidget::exportGroupsRequested, this, &MainWindow::onExportFilterGroups);
    connect(dock, &FilterDockWidget::importGroupsRequested, this, &MainWindow::onImportFilterGroups);
}

void MainWindow::onApplyFilterToAll()
{
    const DatasetEntry* active = activeEntry();
    if (!active)
        return;
    for (DatasetEntry* peer : datasetList) {
        if (peer == active)
            continue;
        peer->filter.setEnabled(active->filter.isEnabled());
        peer->filter.setCombineMode(active->filter.combineMode());
        peer->filter.clearRules();
        for (const FilterRule& rule : active->filter.rules())
            peer->filter.addRule(rule);
    }
    onFilterChanged();
}

void MainWindow::onApplyRuleToAll(int ruleIndex)
{
    DatasetEntry* active = activeEntry();
    if (!active || ruleIndex < 0 || ruleIndex >= active->filter.ruleCount())
        return;
    FilterRule rule = active->filter.rules()[static_cast<std::size_t>(ruleIndex)];
    if (rule.propagationId.empty()) {
        rule.propagationId = QUuid::createUuid().toString().toStdString();
        active->filter.setRule(ruleIndex, rule);
    }
    for (DatasetEntry* peer : datasetList) {
        if (peer == active)
            continue;
        const int linked = findLinkedRule(peer->filter, rule.propagationId);
        if (linked >= 0)
            peer->filter.setRule(linked, rule);
        else
            peer->filter.addRule(rule);
    }
    filterDock->setRulePropagationId(ruleIndex, rule.propagationId);
    onFilterChanged();
}

void MainWindow::onUpdateRuleToAll(int ruleIndex)
{
    const DatasetEntry* active = activeEntry();
    if (!active || ruleIndex < 0 || ruleIndex >= active->filter.ruleCount())
        return;
    const FilterRule& rule = active->filter.rules()[static_cast<std::size_t>(ruleIndex)];
    if (rule.propagationId.empty())
        return;
    // A peer that deleted its copy keeps it deleted.
    for (DatasetEntry* peer : datasetList) {
        const int linked = peer == active ? -1 : findLinkedRule(peer->filter, rule.propagationId);
        if (linked >= 0)
            peer->filter.setRule(linked, rule);
    }
    onFilterChanged();
}

void MainWindow::onUncheckRuleInAll(int ruleIndex)
{
    setCheckedInAll(ruleIndex, false);
}

void MainWindow::onCheckRuleInAll(int ruleIndex)
{
    setCheckedInAll(ruleIndex, true);
}

void MainWindow::setCheckedInAll(int ruleIndex, bool on)
{
    const DatasetEntry* active = activeEntry();
    if (!active || ruleIndex < 0 || ruleIndex >= active->filter.ruleCount())
        return;
    const std::string id = active->filter.rules()[static_cast<std::size_t>(ruleIndex)].propagationId;
    if (id.empty())
        return;
    for (DatasetEntry* peer : datasetList) {
        const int linked = peer == active ? -1 : findLinkedRule(peer->filter, id);
        if (linked < 0)
            continue;
        FilterRule copy = peer->filter.rules()[static_cast<std::size_t>(linked)];
        copy.enabled = on;
        peer->filter.setRule(linked, copy);
    }
    filterDock->setRuleChecked(ruleIndex, on);
    onFilterChanged();
}

void MainWindow::onDeleteRuleFromAll(int ruleIndex)
{
    const DatasetEntry* active = activeEntry();
    if (!active || ruleIndex < 0 || ruleIndex >= active->filter.ruleCount())
        return;
    const std::string id = active->filter.rules()[static_cast<std::size_t>(ruleIndex)].propagationId;
    if (id.empty())
        return;
    for (DatasetEntry* peer : datasetList) {
        const int linked = peer == active ? -1 : findLinkedRule(peer->filter, id);
        if (linked >= 0)
            peer->filter.removeRule(linked);
    }
    filterDock->removeRuleRow(ruleIndex);
    onFilterChanged();
}

void MainWindow::onEnabledChangedForAll(bool enabled)
{
    setInPeerFilters([enabled](EventFilter& filter) { filter.setEnabled(enabled); });
}

void MainWindow::onCombineModeChangedForAll(int mode)
{
    setInPeerFilters([mode](EventFilter& filter) { filter.setCombineMode(mode); });
}

// The active dataset's dock has changed its own filter already; the others follow.
void MainWindow::setInPeerFilters(const std::function<void(EventFilter&)>& change)
{
    const DatasetEntry* active = activeEntry();
    for (DatasetEntry* peer : datasetList) {
        if (peer != active)
            change(peer->filter);
    }
    onFilterChanged();
}

void MainWindow::onImportMeasurementFilters(bool toAll)
{
    DatasetEntry* active = activeEntry();
    int added = 0;
    if (toAll) {
        for (DatasetEntry* entry : datasetList)
            added += importSoftLimits(entry);
    } else if (active) {
        added = importSoftLimits(active);
    }
    if (added > 0) {
        filterDock->setDataset(active);
        onFilterChanged();
    } else {
        MessageBoxes::information(
            this, FilterOperationTexts::importMeasurementTitle, FilterOperationTexts::noSoftLimits);
    }
}

int MainWindow::importSoftLimits(DatasetEntry* ds)
{
    if (!ds || ds->metadata.online_filter.empty())
        return 0;
    // All rules are read before any is added, so that a bound that is no number leaves the filter
    // as it was.
    const std::vector<FilterRule> rules = softLimitRules(ds->metadata);
    for (const FilterRule& rule : rules)
        ds->filter.addRule(rule);
    if (!rules.empty())
        ds->filter.setEnabled(true);
    return static_cast<int>(rules.size());
}

void MainWindow::updatePeerHighlights()
{
    const DatasetEntry* active = activeEntry();
    if (!active) {
        filterDock->setPeerHighlights(false, false);
        return;
    }
    bool enabledDiffers = false;
    bool modeDiffers = false;
    for (const DatasetEntry* peer : datasetList) {
        if (peer == active)
            continue;
        enabledDiffers = enabledDiffers || peer->filter.isEnabled() != active->filter.isEnabled();
        modeDiffers = modeDiffers || peer->filter.combineMode() != active->filter.combineMode();
    }
    filterDock->setPeerHighlights(enabledDiffers, modeDiffers);

    const std::vector<FilterRule>& rules = active->filter.rules();
    for (std::size_t i = 0; i < rules.size(); ++i) {
        const FilterRule& rule = rules[i];
        bool parameters = false;
        bool enabled = false;
        if (!rule.propagationId.empty()) {
            for (const DatasetEntry* peer : datasetList) {
                if (peer == active || !hasRuleFeatures(*peer, rule))
                    continue;
                const int linked = findLinkedRule(peer->filter, rule.propagationId);
                if (linked < 0)
                    continue;
                const FilterRule& copy = peer->filter.rules()[static_cast<std::size_t>(linked)];
                parameters = parameters || parametersDiffer(rule, copy);
                if (copy.enabled != rule.enabled) {
                    enabled = true;
                    break;
                }
            }
        }
        filterDock->setRuleHighlights(static_cast<int>(i), parameters, enabled);
    }
}

} // namespace Tessaly
