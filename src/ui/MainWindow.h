#pragma once

#include "calc/Contours.h"
#include "calc/Density.h"
#include "core/EventFilter.h"
#include "core/FilterGroup.h"
#include "ui/ExportConfig.h"

#include <QDir>
#include <QFutureWatcher>
#include <QJsonObject>
#include <QList>
#include <QMainWindow>
#include <QPair>
#include <QQueue>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QAction;
class QActionGroup;
class QCheckBox;
class QComboBox;
class QDockWidget;
class QLabel;
class QLineEdit;
class QPolygonF;
class QProgressDialog;
class QPushButton;
class QSpinBox;
class QSplitter;
class QStackedWidget;
class QTabWidget;
class QTimer;
class QTableWidget;
class QTreeWidget;

namespace Tessaly {

struct DatasetEntry;
struct CalculationTask;
class CalculationsDockWidget;
class EModulus;
class FLCompensation;
class FLRefinement;
class FourierDeform;
enum class CalculationJob;
class DatasetListWidget;
class DatasetTreeWidget;
class FilterDockWidget;
class ImageViewer;
class ScatterPlot;
class StartPanel;
class StatisticsDockWidget;
class TracePlot;
class FileCheck;
class FirstColumnsHandOff;

// Texts of the main window, in one place.
namespace MainWindowTexts {
inline const QString windowTitle = QStringLiteral("Tessaly - VQD Data Analysis");
// %1 is the message of the failure.
inline const QString unexpectedErrorText = QStringLiteral(
    "An unexpected error occurred:\n\n%1\n\nYou can send a diagnostic report to help us fix this.");
inline const QString sendFeedbackButton = QStringLiteral("Send Feedback...");
inline const QString closeButton = QStringLiteral("Close");

inline const QString noFileStartText
    = QStringLiteral("No file loaded. Drag and drop a .vqd file or use File > Open.");
inline const QString noFileText = QStringLiteral("No file loaded.");
inline const QString loadingText = QStringLiteral("Loading: %1...");
inline const QString cachingText = QStringLiteral("Loading: %1 - Caching features...");
inline const QString loadedText = QStringLiteral("Loaded: %1 (%2)");

inline const QString openCaption = QStringLiteral("Open VQD File(s)");
inline const QString openFilter = QStringLiteral("VQD Files (*.vqd);;All Files (*)");
inline const QString errorTitle = QStringLiteral("Error");
inline const QString failedToOpenText = QStringLiteral("Failed to open: ");
inline const QString unsupportedTitle = QStringLiteral("Unsupported Data");
inline const QString unsupportedText
    = QStringLiteral("The data does not seem to originate from a ORVANE INSTRUMENTS Vortiq.\nTessaly is not "
                     "designed to handle this "
                     "data.");
inline const QString invalidFileTitle = QStringLiteral("Invalid File");
inline const QString invalidFileText = QStringLiteral("Please drop .vqd file(s) or folders containing them.");
inline const QString cannotRemoveTitle = QStringLiteral("Cannot Remove");
inline const QString cannotRemoveText = QStringLiteral("This dataset is still loading.");
inline const QString clearSessionTitle = QStringLiteral("Clear Session");
inline const QString clearSessionText = QStringLiteral(
    "This will close all datasets and combine plot windows.\nUnsaved changes will be lost.\n\nContinue?");
inline const QString copySuffix = QStringLiteral(" (copy)");
inline const QString failedToReadFeatureText = QStringLiteral("Failed to read feature data.");
inline const QString densityLabel = QStringLiteral("Density");
inline const QString eventTitle = QStringLiteral("Event %1");
inline const QString withMaskSuffix = QStringLiteral(" (with mask)");
inline const QString noImageInFileText = QStringLiteral("No image in this file");
inline const QString xScaleToolTip = QStringLiteral("X-axis scale mode");
inline const QString yScaleToolTip = QStringLiteral("Y-axis scale mode");
inline const QString logWarningItem = QStringLiteral("Log ⚠");
inline const QString logWarningSheet
    = QStringLiteral("QComboBox { background-color: #fff8e1; border: 1px solid #f9a825; }");
// %1 the axis, %2 the count, %3 the plural ending.
inline const QString logWarningToolTip
    = QStringLiteral("%1: %2 point%3 with value ≤ 0 not shown (cannot be drawn on a log axis)");
inline const QString applyButtonToolTip
    = QStringLiteral("Copy the active dataset's feature, scale, and contour settings to every other loaded "
                     "dataset. Highlights "
                     "when any peer differs.");
inline const QString applyButtonHighlightSheet
    = QStringLiteral("QPushButton { background-color: #a6d7d5; color: #00abad; border: 1px solid #00abad; "
                     "font-weight: bold; }");
inline const QString densityKdeKey = QStringLiteral("__density_kde__");
inline const QString densityKdeText = QStringLiteral("Density (KDE)");
inline const QStringList colorMapNames = { QStringLiteral("Viridis"), QStringLiteral("Jet"),
    QStringLiteral("Jet+"), QStringLiteral("Plasma"), QStringLiteral("Quorin"), QStringLiteral("Grayscale") };
} // namespace MainWindowTexts

// The keys of the program's persistent settings.
namespace SettingsKeys {
inline const QString checkOnStartup = QStringLiteral("updates/checkOnStartup");
inline const QString ignoredVersion = QStringLiteral("updates/ignoredVersion");
inline const QString datasetViewMode = QStringLiteral("datasetView/mode");
inline const QString datasetViewDepth = QStringLiteral("datasetView/depth");
inline const QString colorMapIndex = QStringLiteral("settings/colorMapIndex");
} // namespace SettingsKeys

// Owner of everything a session holds: the datasets (row order = list order), the filter groups,
// the docks and the tool windows. Its definitions are split by concern over several files:
// MainWindow.cpp (construction, settings, closing), MainWindowLayout.cpp (docks, central widget,
// menus), MainWindowOpening.cpp (the file check, opening and refusals), MainWindowDatasets.cpp (preload,
// removal, duplication, clearing) and
// MainWindowDatasetList.cpp (the list and folder views), MainWindowPlot.cpp (showing the active
// dataset), MainWindowRefresh.cpp (the refresh pipeline), MainWindowFilterOps.cpp (filters across
// datasets), MainWindowFilterGroups.cpp, MainWindowFilterGroupFiles.cpp, MainWindowIsoelastics.cpp
// (Young's modulus lines on the plot), MainWindowPolygons.cpp (polygon gates drawn and edited on
// the plot), MainWindowCalculations.cpp (the jobs of the calculations dock), MainWindowExport.cpp
// (data export) and MainWindowStart.cpp (the start panel and the entries of features not built yet).
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    std::vector<DatasetEntry*>& datasets() { return datasetList; }
    int activeDatasetId() const;
    DatasetEntry* findDatasetById(int id) const;
    DatasetEntry* findDatasetByPath(const std::string& filePath) const;
    bool datasetFolderViewActive() const;
    int datasetFolderDepth() const;
    int colorMapIndex() const { return currentColorMapIndex; }
    CalculationsDockWidget* calcDock() const { return calculationsDock; }

    const std::vector<FilterGroup*>& filterGroups() const { return groups; }
    FilterGroup* findFilterGroupById(int id) const;
    bool isGroupEnabled(const DatasetEntry* ds, int groupId) const;
    int addFilterGroup(const std::string& name);
    void addRuleToGroup(int groupId, const FilterRule& rule);
    void setGroupEnabled(int datasetId, int groupId, bool on);
    // Filters across datasets and filter group files (MainWindowFilterOps.cpp,
    // MainWindowFilterGroups.cpp, MainWindowFilterGroupFiles.cpp).
    void updateRuleInGroup(int groupId, int ruleIndex, const FilterRule& rule);
    void removeRuleFromGroup(int groupId, int ruleIndex);
    // Appends the dataset's soft limits as rules; returns how many were added.
    int importSoftLimits(DatasetEntry* ds);
    void updatePeerHighlights();
    // The work of the export and import dialogs once a file is chosen; both report to the user.
    bool exportFilterGroups(const QString& path, const std::vector<int>& groupIds);
    int importFilterGroups(const QString& path);
    // The rules that decide which events of a dataset count: its own, then those of every group it
    // has enabled, under the dataset's own switch and combine mode.
    EventFilter buildEffectiveFilter(const DatasetEntry* ds) const;

    // Copies the settings the controls hold for the active dataset into its entry.
    void saveCurrentDatasetState();

    void openDataset(const QString& path);
    int openSessionDataset(const QString& path);
    bool isPreloadRunning() const { return preloadRunning; }
    // A file is being checked before it is opened; the window goes on meanwhile.
    bool isCheckingFile() const;

    // Writes the events of `entry` that pass its effective filter in the format `config` asks for,
    // beside its file or in the configured folder. Failures are reported in a message box; true when
    // the file was written.
    bool exportDataset(DatasetEntry* entry, const ExportConfig& config);

    // What the plot shows of the active dataset: the points, and for each point its event (empty
    // when all events are shown in file order).
    const std::vector<double>& plottedX() const { return plotX; }
    const std::vector<double>& plottedY() const { return plotY; }
    const std::vector<double>& plottedColor() const { return plotColor; }
    const std::vector<int>& plottedEvents() const { return visibleIndices; }

    // The one Young's modulus engine, which keeps its tables for the life of the window.
    EModulus* emodulus();

public Q_SLOTS:
    // Shows a failure that escaped an event handler, with the offer of a feedback report. Reports
    // that arrive while such a dialog is open are dropped, so that a repeating fault can't stack
    // dialogs.
    void onUnhandledException(const QString& title, const QString& message);

    void openFile();
    void removeDataset();
    void duplicateDataset();
    void clearSession();
    void onDatasetSelected(int index);
    void showActiveDataset();
    void onFilterChanged();
    // Asks for onFilterChanged at the next turn of the event loop. Requests that arrive meanwhile,
    // as while a bound is typed or stepped faster than a large dataset refreshes, are served by
    // that one refresh with the latest rules: refreshes never queue up behind each other.
    void requestRefresh(bool keepGroupWidgets = false);
    bool isRefreshQueued() const { return refreshQueued; }
    void updateFeatureSelection();
    void refreshFeaturesAndPlot();
    void showMetadata();
    void onPointClicked(int index);
    void onEventSpinBoxChanged(int index);
    void onMaskToggled(bool checked);
    void showEventData(int event);
    void onApplyPlotSettingsToAll();
    // Data export: the dialog, then the current dataset or all of them.
    void exportData();

    // Opens the example datasets that the start panel offers.
    void openExampleData();

    // Filters across datasets: the active dataset is the source.
    void onApplyFilterToAll();
    void onApplyRuleToAll(int ruleIndex);
    void onUpdateRuleToAll(int ruleIndex);
    void onUncheckRuleInAll(int ruleIndex);
    void onCheckRuleInAll(int ruleIndex);
    void onDeleteRuleFromAll(int ruleIndex);
    void onEnabledChangedForAll(bool enabled);
    void onCombineModeChangedForAll(int mode);
    void onImportMeasurementFilters(bool toAll);
    // Filter groups.
    int addFilterGroup();
    void removeFilterGroup(int id);
    void renameFilterGroup(int id, const QString& newName);
    void setGroupEnabledInAll(int groupId, bool on);
    void onExportFilterGroups();
    void onImportFilterGroups();
    // Polygon gates drawn and edited on the plot (MainWindowPolygons.cpp). Ids are those of the
    // plot's overlays: an own rule's index, or a group-coded id.
    void onPolygonDrawRequested();
    void onPolygonDrawCancelRequested();
    void onAddPolygonToGroupRequested(int groupId);
    void onPolygonDrawingStopped();
    void onPolygonCompleted(const QPolygonF& polygon);
    void onPolygonEditRequested(int ruleIndex, bool on);
    void onGroupPolygonEditRequested(int groupId, int ruleIndex, bool on);
    void onPolygonEdited(int id, const QPolygonF& polygon);
    void onPolygonEditingStopped(int id);

    // Calculations (MainWindowCalculations.cpp): one job at a time on the global thread pool.
    void onRefineFluorescence();
    void onCompensateCrosstalk();
    void onComputeEmodulus();
    void onComputeFourierDeform();

public:
    bool isCalculationRunning() const { return calcBusy; }
    // Hands `work` to the thread pool and keeps `finish` for the interface thread; nothing happens
    // while another job runs.
    void runCalculation(std::function<void()> work, std::function<void()> finish);

    // Sessions (MainWindowSession.cpp): the File menu's entries, with their dialogs.
    void saveSession();
    void loadSession();

public:
    // Writes the session to `path` through a temporary file; false after saying why.
    bool saveSessionTo(const QString& path);
    // Reads and checks the session at `path`, then replaces the current one by it. A file that can't
    // be read or isn't a session leaves the current session as it is.
    void loadSessionFrom(const QString& path);
    bool isSessionLoading() const { return sessionLoading; }

signals:
    // The plot and the panels around it show the active dataset anew.
    void plotRefreshed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private Q_SLOTS:
    void onFeaturesLoaded();
    void onFileCheckFinished(bool passed, const QString& reason);
    void showCheckProgress();
    void cancelFileCheck();
    void onColorMapSelected(QAction* action);
    void onDatasetViewModeChanged(int mode);
    void onDatasetDepthChanged(int depth);
    void onCheckOnStartupToggled(bool checked);
    void onRenameFinished();
    void onDatasetContextMenu(const QPoint& position);
    void onTreeReorderRequested(int sourceId, int targetId, bool after);
    void onScaleModeChanged();
    void updateContours();
    void showContours(int mode, const std::vector<ContourLevel>& levels);
    void updateIsoelastics();
    void updateStartPanel();
    void setInPeerFilters(const std::function<void(EventFilter&)>& change);
    void onCalcFinished();

private:
    // Construction, by concern.
    void createDocks();
    QWidget* createDatasetsPanel();
    QWidget* createCentralPanel();
    QWidget* createPlotSettings();
    void createMenus();
    void connectSignals();
    void setupFirstStart();

    // Opening: the file check, refusals and the queue of files.
    int startFileCheck(const QString& path, bool forSession);
    void hideCheckProgress();
    std::unique_ptr<DatasetEntry> openEntry(const QString& path, int id);
    void refuseFile(const QString& path, const QString& reason);
    void continueOpening();
    void restoreStatus();
    void reportUnreadableColumns(const std::vector<std::string>& names);

    // Datasets.
    int appendEntry(std::unique_ptr<DatasetEntry> entry, bool inheritFromPeers);
    static void copyPlotSettings(const DatasetEntry& from, DatasetEntry& to);
    void startPreload(int row);
    void showPlotWhileLoading();
    void removeDatasetAt(int row);
    void inheritPeerSettings(DatasetEntry* entry);
    bool activeMatchesAllPeers(const DatasetEntry* excluded) const;
    void addDatasetRow(const DatasetEntry* entry);
    void rebuildDatasetList();
    void rebuildDatasetTree();
    void moveDataset(int fromRow, int toRow);
    int rowOf(const DatasetEntry* entry) const;
    void setCurrentRow(int row);
    int currentRow() const;
    void clearDatasetViews();
    void deleteToolWindows();
    // Sessions (MainWindowSession.cpp).
    bool openNextSessionFile();
    void finishSessionLoad();
    void restoreSessionDuplicates(const std::vector<QJsonObject>& stored);
    void restoreSessionOrder();
    void applySessionColorMap(int index);

    // Showing the active dataset.
    DatasetEntry* activeEntry() const;
    void populateFeatureCombos();
    void applyPlotControls(DatasetEntry& entry);
    void updatePlotStatus();
    void updateApplyPlotButton();
    void fillMetadataTree();
    void cleanPlotPoints();
    void placeSelection(DatasetEntry& entry);
    void markLogAxisProblem(QComboBox* combo, int count, const QString& axisName);
    void updatePolygonOverlays();
    void showEventTraces(int event);

    // Filters across datasets.
    void connectFilterDock();
    void refreshFilterGroupWidgets();
    void setCheckedInAll(int ruleIndex, bool on);
    void setupTraceChannels(const DatasetEntry& entry);
    QString datasetLabelHtml(const DatasetEntry* entry) const;

    // Polygon gates.
    void connectPolygonSignals();
    void startPolygonEditOf(int id, const FilterRule* rule);
    const FilterRule* polygonRuleOf(int id) const;
    void keepPolygonEditValid();
    // Calculations.
    void createCalculationEngines();
    void waitForCalculation();
    DatasetEntry* calculationTarget() const;
    void finishCalculation(CalculationJob job, const std::vector<int>& datasetIds,
        const std::shared_ptr<std::vector<char>>& results, std::function<bool(const std::string&)> changed,
        std::function<void(DatasetEntry&)> mark);
    void updateCalculationsDock(DatasetEntry& entry);
    void rebuildRestoredFeatures(DatasetEntry& entry);

    // Session.
    std::vector<DatasetEntry*> datasetList;
    int nextDatasetId = 0;
    int activeDatasetIndex = -1;
    std::vector<FilterGroup*> groups;
    int nextGroupId = 0;
    int currentColorMapIndex = 0;
    bool exceptionDialogOpen = false;

    // Tool windows without parent, each closed and deleted with the main window or the session.
    QList<QMainWindow*> combinePlotWindows;
    QList<QMainWindow*> statisticalEvaluationWindows;
    QList<QMainWindow*> imageGalleryWindows;
    QList<QMainWindow*> filterGroupMatrixWindows;

    // Opening and background preload. Queues hold rows, kept right by removeDataset.
    QFutureWatcher<void>* preloadWatcher = nullptr;
    QFutureWatcher<void>* calculationWatcher = nullptr;
    bool preloadRunning = false;
    int preloadRow = -1;
    // Where the running preload waits until the plot of its first columns is drawn.
    std::shared_ptr<FirstColumnsHandOff> preloadHandOff;
    // Why the running preload's file was refused; written by the task before it ends.
    std::shared_ptr<QString> preloadFailure;
    QQueue<int> pendingPreloadRows;
    QQueue<QString> pendingOpenPaths;
    QQueue<QPair<int, QString>> pendingSessionFiles;
    std::map<int, int> sessionIndexToId;
    bool sessionLoading = false;
    // The session being loaded, kept until its datasets are in and its state is applied.
    QJsonObject loadingSessionDocument;
    bool loadingSessionKept = false;
    // Shown once per run, so that a folder of foreign files costs one dialog.
    bool unsupportedDataWarned = false;
    // The check of the file being opened, made on first use; the id reserved for its dataset, and
    // whether a session asked for it. Its progress window shows only when it takes long.
    FileCheck* fileCheck = nullptr;
    int checkingId = -1;
    bool checkingForSession = false;
    QTimer* checkProgressTimer = nullptr;
    QProgressDialog* checkProgress = nullptr;

    // On while a group rule is written back, so that the refresh leaves the row being edited alone.
    bool groupRuleUpdating = false;
    // A refresh was asked for and hasn't run yet; it leaves the group widgets alone if every request
    // since came from a group's rule row.
    bool refreshQueued = false;
    bool queuedRefreshKeepsGroupWidgets = false;
    void runQueuedRefresh();

    // Plot state of the active dataset, rebuilt by every run of onFilterChanged.
    std::vector<double> plotX;
    std::vector<double> plotY;
    std::vector<double> plotColor; // empty for no colour
    // For plot index i, the event index; empty means all events in file order.
    std::vector<int> visibleIndices;
    QString plotXLabel;
    QString plotYLabel;
    QString plotColorLabel;
    // The kernel density behind a density colour, which the contours of the same points reuse.
    KernelDensityFit densityFit;
    bool filterReducedPlot = false;
    std::string lastPlotXName;
    std::string lastPlotYName;
    int lastPlotDataset = -1;
    // A one-shot question left by a calculation: has this feature changed (so the zoom must go)?
    std::function<bool(const std::string&)> zoomResetCheck;
    // The filter group that the polygon being drawn is to join, -1 for the active dataset's own
    // rules; and the dataset whose own rule is under edit on the plot.
    int pendingPolygonGroup = -1;
    int polygonEditDatasetId = -1;
    // The vertices of the rule under edit as the edit last left them; a rule that no longer has
    // them has been changed or moved by someone else.
    std::vector<PlanePoint> polygonEditShape;
    // Refined traces are shown when a dataset has them, until the calculations dock says otherwise.
    bool preferRefinedTraces = true;

    // Young's modulus (MainWindowIsoelastics.cpp): made before the docks, which show its table.
    EModulus* emodulusEngine = nullptr;
    // Calculations: the other engines, made once, and the one job that may run.
    FLRefinement* flRefinement = nullptr;
    FLCompensation* flCompensation = nullptr;
    FourierDeform* fourierDeform = nullptr;
    bool calcBusy = false;
    std::function<void()> calcFinish;

    // Docks and their widgets.
    QDockWidget* datasetsDock = nullptr;
    QDockWidget* filtersDock = nullptr;
    QDockWidget* statisticsDockWidget = nullptr;
    QDockWidget* calculationsDockWidget = nullptr;
    QDockWidget* metadataDock = nullptr;
    QComboBox* datasetViewModeCombo = nullptr;
    QLabel* depthLabel = nullptr;
    QSpinBox* depthSpinBox = nullptr;
    QStackedWidget* datasetViewStack = nullptr;
    DatasetListWidget* datasetListWidget = nullptr;
    DatasetTreeWidget* datasetTreeWidget = nullptr;
    bool treeSelectionUpdating = false;
    FilterDockWidget* filterDock = nullptr;
    StatisticsDockWidget* statisticsDock = nullptr;
    CalculationsDockWidget* calculationsDock = nullptr;
    QTreeWidget* metadataTree = nullptr;

    // Central widget.
    QLabel* statusLabel = nullptr;
    QLineEdit* renameEdit = nullptr;
    QComboBox* xFeatureCombo = nullptr;
    QComboBox* yFeatureCombo = nullptr;
    QComboBox* colorFeatureCombo = nullptr;
    QComboBox* xScaleCombo = nullptr;
    QComboBox* yScaleCombo = nullptr;
    QComboBox* contourCombo = nullptr;
    QSpinBox* innerContourSpinBox = nullptr;
    QSpinBox* outerContourSpinBox = nullptr;
    QCheckBox* isoelasticsCheckBox = nullptr;
    QCheckBox* isoelasticLabelsCheckBox = nullptr;
    QPushButton* applyPlotSettingsButton = nullptr;
    QSpinBox* eventSpinBox = nullptr;
    QSplitter* plotSplitter = nullptr;
    bool plotSplitterSized = false;
    ScatterPlot* scatterPlot = nullptr;
    QTabWidget* eventTabs = nullptr;
    ImageViewer* imageViewer = nullptr;
    TracePlot* tracePlot = nullptr;
    QTableWidget* eventTable = nullptr;

    // First start: the panel over the empty plot.
    StartPanel* startPanel = nullptr;

    // Menus.
    QActionGroup* colorMapActions = nullptr;
    QAction* checkOnStartupAction = nullptr;
    // No expert mode exists; the field stays null so that sessions always record it as off.
    QAction* expertModeAction = nullptr;

    // Data export: the choices of the last export dialog, for the next one.
    ExportConfig lastExportConfig;
    bool lastExportConfigSet = false;
};

} // namespace Tessaly
