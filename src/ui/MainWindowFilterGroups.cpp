// Filter groups: rules shared by every dataset that switches the group on.
#include "core/DatasetEntry.h"
#include "ui/FilterDockWidget.h"
#include "ui/MainWindow.h"

#include <algorithm>

namespace Tessaly {

int MainWindow::addFilterGroup(const std::string& name)
{
    auto* group = new FilterGroup;
    group->id = nextGroupId++;
    group->name = name.empty() ? defaultFilterGroupName(group->id) : name;
    groups.push_back(group);
    // A new group starts off everywhere.
    for (DatasetEntry* entry : datasetList)
        entry->groupEnabled.insert(group->id, false);
    refreshFilterGroupWidgets();
    return group->id;
}

int MainWindow::addFilterGroup()
{
    return addFilterGroup(std::string());
}

void MainWindow::removeFilterGroup(int id)
{
    const auto found = std::find_if(
        groups.begin(), groups.end(), [id](const FilterGroup* group) { return group->id == id; });
    if (found == groups.end())
        return;
    delete *found;
    groups.erase(found);
    for (DatasetEntry* entry : datasetList)
        entry->groupEnabled.remove(id);
    onFilterChanged();
    refreshFilterGroupWidgets();
}

void MainWindow::renameFilterGroup(int id, const QString& newName)
{
    if (FilterGroup* group = findFilterGroupById(id)) {
        group->name = newName.toStdString();
        refreshFilterGroupWidgets();
    }
}

void MainWindow::addRuleToGroup(int groupId, const FilterRule& rule)
{
    FilterGroup* group = findFilterGroupById(groupId);
    if (!group)
        return;
    // Group rules are shared already; a propagation id would tie them to datasets' own copies.
    FilterRule copy = rule;
    copy.propagationId.clear();
    group->rules.push_back(copy);
    onFilterChanged();
    refreshFilterGroupWidgets();
}

void MainWindow::updateRuleInGroup(int groupId, int ruleIndex, const FilterRule& rule)
{
    FilterGroup* group = findFilterGroupById(groupId);
    if (!group || ruleIndex < 0 || ruleIndex >= static_cast<int>(group->rules.size()))
        return;
    FilterRule copy = rule;
    copy.propagationId.clear();
    group->rules[static_cast<std::size_t>(ruleIndex)] = copy;
    // The row being typed in stays as it is: the refresh leaves the group widgets alone.
    requestRefresh(true);
}

void MainWindow::removeRuleFromGroup(int groupId, int ruleIndex)
{
    FilterGroup* group = findFilterGroupById(groupId);
    if (!group || ruleIndex < 0 || ruleIndex >= static_cast<int>(group->rules.size()))
        return;
    group->rules.erase(group->rules.begin() + ruleIndex);
    onFilterChanged();
    refreshFilterGroupWidgets();
}

void MainWindow::setGroupEnabled(int datasetId, int groupId, bool on)
{
    if (DatasetEntry* entry = findDatasetById(datasetId))
        entry->groupEnabled.insert(groupId, on);
    onFilterChanged();
}

void MainWindow::setGroupEnabledInAll(int groupId, bool on)
{
    if (!findFilterGroupById(groupId))
        return;
    for (DatasetEntry* entry : datasetList)
        entry->groupEnabled.insert(groupId, on);
    onFilterChanged();
    refreshFilterGroupWidgets();
}

void MainWindow::refreshFilterGroupWidgets()
{
    const DatasetEntry* entry = activeEntry();
    filterDock->setFilterGroups(groups, entry ? entry->reader.get() : nullptr);
}

} // namespace Tessaly
