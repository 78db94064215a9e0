#pragma once

#include <QString>

namespace Tessaly {

// Texts, tool tips and style sheets of the filter dock and its rows, for the widgets and their tests.
namespace FilterDockTexts {
inline const QString groupBoxTitle = QStringLiteral("Active Dataset Filter");
inline const QString noDataset = QStringLiteral("No dataset selected");
inline const QString filteringEnabled = QStringLiteral("Filtering Enabled");
inline const QString disableInAll = QStringLiteral("Disable in All Datasets");
inline const QString enableInAll = QStringLiteral("Enable in All Datasets");
inline const QString enabledForAllToolTip
    = QStringLiteral("Apply this dataset's filter-enabled state to every loaded dataset.");
inline const QString showExcluded = QStringLiteral("Show Excluded Events");
inline const QString showExcludedToolTip
    = QStringLiteral("Invert the filter result so the events the rules normally reject are shown instead.");
inline const QString showExcludedInAll = QStringLiteral("Show Excluded in All Datasets");
inline const QString hideExcludedInAll = QStringLiteral("Hide Excluded in All Datasets");
inline const QString combineModeForAllToolTip
    = QStringLiteral("Apply this dataset's inversion state to every loaded dataset.");
inline const QString addRule = QStringLiteral("+ Rule");
inline const QString addRuleToolTip = QStringLiteral("Add a range rule to this dataset's filter");
inline const QString addPolygon = QStringLiteral("+ Polygon");
inline const QString addPolygonToolTip
    = QStringLiteral("Click in the plot to place polygon vertices. Double-click to close the polygon, or "
                     "press Esc to cancel.");
inline const QString addGroup = QStringLiteral("+ Group");
inline const QString addGroupToolTip = QStringLiteral(
    "Add a filter group whose rules are shared across all datasets, with per-dataset on/off toggles.");
inline const QString moreActions = QStringLiteral("⋮");
inline const QString moreActionsToolTip = QStringLiteral("More filter actions");
inline const QString applyFilterToAll = QStringLiteral("Apply Filter to All Datasets");
inline const QString applyFilterToAllToolTip
    = QStringLiteral("Copy this dataset's enabled state, combine mode, and rules onto every other dataset "
                     "(overwrites their existing rules).");
inline const QString importMeasurementFilters = QStringLiteral("Import Measurement Filters");
inline const QString forActiveDataset = QStringLiteral("For Active Dataset");
inline const QString forActiveDatasetToolTip
    = QStringLiteral("Import online filter settings from HDF5 metadata (soft limits only)");
inline const QString forAllDatasets = QStringLiteral("For All Datasets");
inline const QString forAllDatasetsToolTip
    = QStringLiteral("Import online filter settings into every loaded dataset");
inline const QString importGroups = QStringLiteral("Import Filter Groups…");
inline const QString exportGroups = QStringLiteral("Export Filter Groups…");
inline const QString noFilterActive = QStringLiteral("No filter active");
inline const QString noEvents = QStringLiteral("No events");
// %1 shown, %2 total, %3 the percentage with one decimal.
inline const QString eventsShown = QStringLiteral("%1 / %2 events shown (%3%)");
inline const QString allEventsShown = QStringLiteral("%1 events (no filter active)");

inline const QString normalButtonSheet
    = QStringLiteral("QPushButton { padding: 2px 8px; min-height: 16px; }");
inline const QString highlightedButtonSheet = normalButtonSheet
    + QStringLiteral(
        " QPushButton { background-color: #a6d7d5; color: #00abad; border: 1px solid #00abad; }");
inline const QString separatorColor = QStringLiteral("#c8c8c8");

// Rule rows.
inline const QString minimumToolTip = QStringLiteral("Minimum value (inclusive)");
inline const QString maximumToolTip = QStringLiteral("Maximum value (inclusive)");
inline const QString spinWidthText = QStringLiteral("-1234567.89");
inline const QString invert = QStringLiteral("Invert");
inline const QString invertToolTip = QStringLiteral("Invert this rule (pass events that do NOT match)");
inline const QString applyToAll = QStringLiteral("Apply to All");
inline const QString updateInAll = QStringLiteral("Update in All");
inline const QString uncheckInAll = QStringLiteral("Uncheck in All");
inline const QString checkInAll = QStringLiteral("Check in All");
inline const QString deleteFromAll = QStringLiteral("Delete from All");
inline const QString removeButton = QStringLiteral("×");
inline const QString removeRuleToolTip = QStringLiteral("Remove this rule");
inline const QString notAvailableSuffix = QStringLiteral(" (n/a)");
inline const QString polygonVersus = QStringLiteral(" vs ");
// %1 the number of vertices.
inline const QString polygonPoints = QStringLiteral("(%1 pts)");
inline const QString polygonPointsColor = QStringLiteral("#787c82");
inline const QString polygonLineColor = QStringLiteral("#00abad");
inline const QString polygonFillColor = QStringLiteral("#a6d7d5");
inline const QString editPolygon = QStringLiteral("Edit");
inline const QString editPolygonToolTip
    = QStringLiteral("Edit polygon: drag vertices to reshape, left-click on an edge to add a vertex, "
                     "right-click a vertex to delete. Press Esc or click Edit again to finish.");

// Group widgets.
inline const QString groupEnableToolTip = QStringLiteral("Enable this group for the active dataset");
inline const QString groupCheckInAll = QStringLiteral("Check in All Datasets");
inline const QString groupUncheckInAll = QStringLiteral("Uncheck in All Datasets");
inline const QString groupPropagateToolTip
    = QStringLiteral("Apply this group's enabled/disabled state to every dataset");
inline const QString deleteGroupToolTip = QStringLiteral("Delete this filter group");
inline const QString groupAddRuleToolTip = QStringLiteral("Add a range rule to this group");
inline const QString groupAddPolygonToolTip
    = QStringLiteral("Draw a polygon gate on the scatter plot and add it to this group");
} // namespace FilterDockTexts

} // namespace Tessaly
