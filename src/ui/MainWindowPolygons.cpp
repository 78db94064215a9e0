// Polygon gates: a polygon drawn on the plot becomes a rule of the active dataset or of a filter
// group, and an edit on the plot writes the new vertices back into that rule.
#include "core/DatasetEntry.h"
#include "core/PolygonRuleId.h"
#include "plot/ScatterPlot.h"
#include "ui/FilterDockWidget.h"
#include "ui/MainWindow.h"

#include <QComboBox>
#include <QPolygonF>

namespace Tessaly {

namespace {

std::string comboKey(const QComboBox* combo)
{
    return combo->currentData().toString().toStdString();
}

std::vector<PlanePoint> toVertices(const QPolygonF& polygon)
{
    std::vector<PlanePoint> vertices;
    vertices.reserve(static_cast<std::size_t>(polygon.size()));
    for (const QPointF& point : polygon)
        vertices.emplace_back(point.x(), point.y());
    return vertices;
}

QPolygonF toPolygon(const std::vector<PlanePoint>& vertices)
{
    QPolygonF polygon;
    polygon.reserve(static_cast<int>(vertices.size()));
    for (const PlanePoint& vertex : vertices)
        polygon << QPointF(vertex.first, vertex.second);
    return polygon;
}

} // namespace

void MainWindow::connectPolygonSignals()
{
    connect(filterDock, &FilterDockWidget::polygonDrawRequested, this, &MainWindow::onPolygonDrawRequested);
    connect(filterDock, &FilterDockWidget::polygonDrawCancelRequested, this,
        &MainWindow::onPolygonDrawCancelRequested);
    connect(filterDock, &FilterDockWidget::addPolygonToGroupRequested, this,
        &MainWindow::onAddPolygonToGroupRequested);
    connect(filterDock, &FilterDockWidget::polygonEditRequested, this, &MainWindow::onPolygonEditRequested);
    connect(filterDock, &FilterDockWidget::groupPolygonEditRequested, this,
        &MainWindow::onGroupPolygonEditRequested);
    connect(scatterPlot, &ScatterPlot::polygonCompleted, this, &MainWindow::onPolygonCompleted);
    connect(scatterPlot, &ScatterPlot::polygonDrawingStopped, this, &MainWindow::onPolygonDrawingStopped);
    connect(scatterPlot, &ScatterPlot::polygonEdited, this, &MainWindow::onPolygonEdited);
    connect(scatterPlot, &ScatterPlot::polygonEditingStopped, this, &MainWindow::onPolygonEditingStopped);
}

// ---------------------------------------------------------------------------------------------
// Drawing

void MainWindow::onPolygonDrawRequested()
{
    pendingPolygonGroup = -1;
    scatterPlot->startPolygonDraw();
}

void MainWindow::onPolygonDrawCancelRequested()
{
    scatterPlot->cancelPolygonDraw();
}

void MainWindow::onAddPolygonToGroupRequested(int groupId)
{
    pendingPolygonGroup = groupId;
    filterDock->setPolygonDrawChecked(true);
    scatterPlot->startPolygonDraw();
}

void MainWindow::onPolygonDrawingStopped()
{
    filterDock->setPolygonDrawChecked(false);
    // A drawing for a group that was cancelled must not send the next one there too.
    pendingPolygonGroup = -1;
}

void MainWindow::onPolygonCompleted(const QPolygonF& polygon)
{
    DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    FilterRule rule;
    rule.type = PolygonRule;
    rule.featureName = comboKey(xFeatureCombo);
    rule.featureNameY = comboKey(yFeatureCombo);
    // The scale modes say in which space the polygon's edges are straight: the one it was drawn in.
    rule.scaleXMode = xScaleCombo->currentIndex();
    rule.scaleYMode = yScaleCombo->currentIndex();
    rule.enabled = true;
    rule.polygonVertices = toVertices(polygon);

    if (pendingPolygonGroup >= 0) {
        const int group = pendingPolygonGroup;
        pendingPolygonGroup = -1;
        addRuleToGroup(group, rule);
        filterDock->setDataset(entry);
        return;
    }
    entry->filter.addRule(rule);
    filterDock->setDataset(entry);
    onFilterChanged();
}

// ---------------------------------------------------------------------------------------------
// Editing

const FilterRule* MainWindow::polygonRuleOf(int id) const
{
    const std::vector<FilterRule>* rules = nullptr;
    int index = id;
    if (isGroupRuleId(id)) {
        const FilterGroup* group = findFilterGroupById(groupOfRuleId(id));
        if (!group)
            return nullptr;
        rules = &group->rules;
        index = ruleOfGroupRuleId(id);
    } else {
        const DatasetEntry* entry = activeEntry();
        if (!entry)
            return nullptr;
        rules = &entry->filter.rules();
    }
    if (index < 0 || index >= static_cast<int>(rules->size()))
        return nullptr;
    const FilterRule& rule = (*rules)[static_cast<std::size_t>(index)];
    return rule.type == PolygonRule ? &rule : nullptr;
}

// A polygon can be edited only on the axes it belongs to; elsewhere its vertices would be
// dragged about in the units of other features.
void MainWindow::startPolygonEditOf(int id, const FilterRule* rule)
{
    if (rule && rule->featureName == comboKey(xFeatureCombo)
        && rule->featureNameY == comboKey(yFeatureCombo)) {
        const DatasetEntry* entry = activeEntry();
        const QPolygonF polygon = toPolygon(rule->polygonVertices);
        // Starting may first end another edit, whose end clears the dataset of the edit.
        const std::vector<PlanePoint> shape = rule->polygonVertices;
        scatterPlot->startPolygonEdit(id, polygon);
        polygonEditDatasetId = isGroupRuleId(id) || !entry ? -1 : entry->id;
        polygonEditShape = shape;
        return;
    }
    // Refused: the toggle that asked goes back off, without a message.
    if (isGroupRuleId(id))
        filterDock->setDataset(activeEntry());
    else
        filterDock->setPolygonEditChecked(id, false);
}

void MainWindow::onPolygonEditRequested(int ruleIndex, bool on)
{
    const FilterRule* rule = isGroupRuleId(ruleIndex) ? nullptr : polygonRuleOf(ruleIndex);
    if (!on) {
        if (scatterPlot->isEditing() && scatterPlot->editId() == ruleIndex)
            scatterPlot->stopPolygonEdit();
        return;
    }
    if (!rule) {
        filterDock->setPolygonEditChecked(ruleIndex, false);
        return;
    }
    startPolygonEditOf(ruleIndex, rule);
}

void MainWindow::onGroupPolygonEditRequested(int groupId, int ruleIndex, bool on)
{
    if (groupId < 0 || ruleIndex < 0 || ruleIndex >= groupRuleIdStride)
        return;
    const int id = groupRuleId(groupId, ruleIndex);
    if (!on) {
        if (scatterPlot->isEditing() && scatterPlot->editId() == id)
            scatterPlot->stopPolygonEdit();
        return;
    }
    startPolygonEditOf(id, polygonRuleOf(id));
}

void MainWindow::onPolygonEdited(int id, const QPolygonF& polygon)
{
    DatasetEntry* entry = activeEntry();
    if (isGroupRuleId(id)) {
        FilterGroup* group = findFilterGroupById(groupOfRuleId(id));
        const int index = ruleOfGroupRuleId(id);
        if (!group || index >= static_cast<int>(group->rules.size()))
            return;
        FilterRule& rule = group->rules[static_cast<std::size_t>(index)];
        if (rule.type != PolygonRule)
            return;
        // The modes stay those of the drawing: they say in which space the edges are straight.
        rule.polygonVertices = toVertices(polygon);
        polygonEditShape = rule.polygonVertices;
    } else {
        if (!entry || id < 0 || id >= entry->filter.ruleCount() || entry->id != polygonEditDatasetId)
            return;
        FilterRule rule = entry->filter.rules()[static_cast<std::size_t>(id)];
        if (rule.type != PolygonRule)
            return;
        rule.polygonVertices = toVertices(polygon);
        entry->filter.setRule(id, rule);
        polygonEditShape = rule.polygonVertices;
    }
    if (entry) {
        filterDock->setDataset(entry);
        if (!isGroupRuleId(id))
            filterDock->setPolygonEditChecked(id, true);
    }
    onFilterChanged();
}

void MainWindow::onPolygonEditingStopped(int id)
{
    if (!isGroupRuleId(id))
        filterDock->setPolygonEditChecked(id, false);
    filterDock->setDataset(activeEntry());
    polygonEditDatasetId = -1;
    updatePolygonOverlays();
}

// An edit belongs to one rule on one pair of axes; once the dataset, the axes or the rule itself
// are gone from the plot, the edit ends rather than reshape some other rule. A rule whose vertices
// are no longer those the edit left has been changed elsewhere, or another rule has taken its
// index since one before it was removed.
void MainWindow::keepPolygonEditValid()
{
    if (!scatterPlot->isEditing())
        return;
    const int id = scatterPlot->editId();
    const DatasetEntry* entry = activeEntry();
    const FilterRule* rule = polygonRuleOf(id);
    const bool sameDataset = isGroupRuleId(id) || (entry && entry->id == polygonEditDatasetId);
    if (sameDataset && rule && rule->polygonVertices == polygonEditShape
        && rule->featureName == comboKey(xFeatureCombo) && rule->featureNameY == comboKey(yFeatureCombo))
        return;
    scatterPlot->stopPolygonEdit();
}

} // namespace Tessaly
