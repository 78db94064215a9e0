#pragma once

#include "core/EventFilter.h"
#include "core/FilterGroup.h"

#include <QFutureWatcher>
#include <QList>
#include <QMainWindow>
#include <QPair>
#include <QQueue>
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
class CalculationsDockWidget;
class DatasetListWidget;
class DatasetTreeWidget;
class FilterDockWidget;
class ImageViewer;
class ScatterPlot;
class StatisticsDockWidget;
class TracePlot;
class FileCheck;

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
// dataset), MainWindowRefresh.cpp (the refresh pipeline) and MainWindowFilterGroups.cpp.
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

    // What the plot shows of the active dataset: the points, and for each point its event (empty
    // when all events are shown in file order).
    const std::vector<double>& plottedX() const { return plotX; }
    const std::vector<double>& plottedY() const { return plotY; }
    const std::vector<double>& plottedColor() const { return plotColor; }
    const std::vector<int>& plottedEvents() const { return visibleIndices; }

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
    void updateFeatureSelection();
    void refreshFeaturesAndPlot();
    void showMetadata();
    void onPointClicked(int index);
    void onEventSpinBoxChanged(int index);
    void onMaskToggled(bool checked);
    void showEventData(int event);
    void onApplyPlotSettingsToAll();

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
    void updateIsoelastics();

private:
    // Construction, by concern.
    void createDocks();
    QWidget* createDatasetsPanel();
    QWidget* createCentralPanel();
    QWidget* createPlotSettings();
    void createMenus();
    void connectSignals();

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
    void finishSessionLoad();

    // Showing the active dataset.
    DatasetEntry* activeEntry() const;
    void populateFeatureCombos();
    void updatePlotStatus();
    void updateApplyPlotButton();
    void fillMetadataTree();
    void cleanPlotPoints();
    void placeSelection(DatasetEntry& entry);
    void markLogAxisProblem(QComboBox* combo, int count, const QString& axisName);
    void updatePolygonOverlays();
    void showEventTraces(int event);
    void setupTraceChannels(const DatasetEntry& entry);
    QString datasetLabelHtml(const DatasetEntry* entry) const;

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
    // Why the running preload's file was refused; written by the task before it ends.
    std::shared_ptr<QString> preloadFailure;
    QQueue<int> pendingPreloadRows;
    QQueue<QString> pendingOpenPaths;
    QQueue<QPair<int, QString>> pendingSessionFiles;
    std::map<int, int> sessionIndexToId;
    bool sessionLoading = false;
    // Shown once per run, so that a folder of foreign files costs one dialog.
    bool unsupportedDataWarned = false;
    // The check of the file being opened, made on first use; the id reserved for its dataset, and
    // whether a session asked for it. Its progress window shows only when it takes long.
    FileCheck* fileCheck = nullptr;
    int checkingId = -1;
    bool checkingForSession = false;
    QTimer* checkProgressTimer = nullptr;
    QProgressDialog* checkProgress = nullptr;

    // Plot state of the active dataset, rebuilt by every run of onFilterChanged.
    std::vector<double> plotX;
    std::vector<double> plotY;
    std::vector<double> plotColor; // empty for no colour
    // For plot index i, the event index; empty means all events in file order.
    std::vector<int> visibleIndices;
    QString plotXLabel;
    QString plotYLabel;
    QString plotColorLabel;
    bool filterReducedPlot = false;
    std::string lastPlotXName;
    std::string lastPlotYName;
    int lastPlotDataset = -1;
    // A one-shot question left by a calculation: has this feature changed (so the zoom must go)?
    std::function<bool(const std::string&)> zoomResetCheck;
    // Refined traces are shown when a dataset has them, until the calculations dock says otherwise.
    bool preferRefinedTraces = true;

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

    // Menus.
    QActionGroup* colorMapActions = nullptr;
    QAction* checkOnStartupAction = nullptr;
    // No expert mode exists; the field stays null so that sessions always record it as off.
    QAction* expertModeAction = nullptr;
};

} // namespace Tessaly
