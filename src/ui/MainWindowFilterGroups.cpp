// Filter groups: rules shared by every dataset that switches the group on.
#include "core/DatasetEntry.h"
#include "ui/MainWindow.h"

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
    return group->id;
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
}

void MainWindow::setGroupEnabled(int datasetId, int groupId, bool on)
{
    if (DatasetEntry* entry = findDatasetById(datasetId))
        entry->groupEnabled.insert(groupId, on);
    onFilterChanged();
}

} // namespace Tessaly
