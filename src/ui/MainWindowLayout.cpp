// The frame of the main window: docks, central widget and menus, and the signal connections.
#include "plot/ImageViewer.h"
#include "plot/ScatterPlot.h"
#include "plot/TracePlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/DatasetListWidget.h"
#include "ui/DatasetTreeWidget.h"
#include "ui/FilterDockWidget.h"
#include "ui/FirstColumnsHandOff.h"
#include "ui/MainWindow.h"
#include "ui/NameColumnLimiter.h"
#include "ui/StatisticsDockWidget.h"
#include "ui/TwoPartLayout.h"

#include <QAbstractItemView>
#include <QAction>
#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace Tessaly {

namespace {

const QString statusLabelSheet
    = QStringLiteral("QLabel { padding: 5px; background-color: #eceef1; border: 1px "
                     "solid #dcdee2; border-radius: 5px; color: #23262e; }");

QDockWidget* makeDock(const QString& title, QWidget* widget, QMainWindow* owner, bool titleBar)
{
    auto* dock = new QDockWidget(title, owner);
    dock->setObjectName(title);
    dock->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    dock->setWidget(widget);
    // An empty widget in place of the title bar hides it.
    if (!titleBar)
        dock->setTitleBarWidget(new QWidget(dock));
    return dock;
}

QComboBox* makeScaleCombo(const QString& toolTip, QWidget* parent)
{
    auto* combo = new QComboBox(parent);
    combo->addItems({ QStringLiteral("Linear"), QStringLiteral("Log"), QStringLiteral("PseudoLog") });
    combo->setToolTip(toolTip);
    // Wide enough for its longest entry, here and in the list that drops down, also when "Log"
    // carries the warning sign.
    combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    combo->view()->setMinimumWidth(combo->view()->sizeHintForColumn(0) + 2 * combo->view()->frameWidth());
    return combo;
}

QSpinBox* makePercentSpinBox(int value, QWidget* parent)
{
    auto* spin = new QSpinBox(parent);
    spin->setRange(1, 99);
    spin->setSingleStep(5);
    spin->setSuffix(QStringLiteral("%"));
    spin->setValue(value);
    return spin;
}

} // namespace

void MainWindow::createDocks()
{
    datasetsDock = makeDock(QStringLiteral("Datasets"), createDatasetsPanel(), this, true);
    datasetsDock->setMinimumWidth(200);
    addDockWidget(Qt::LeftDockWidgetArea, datasetsDock);

    filterDock = new FilterDockWidget(this);
    filtersDock = makeDock(QStringLiteral("Filters"), filterDock, this, false);
    filtersDock->setMinimumWidth(300);
    filtersDock->setMaximumWidth(500);

    statisticsDock = new StatisticsDockWidget(this);
    statisticsDockWidget = makeDock(QStringLiteral("Plot Statistics"), statisticsDock, this, true);
    statisticsDockWidget->setMinimumWidth(250);

    calculationsDock = new CalculationsDockWidget(emodulusEngine, this);
    calculationsDockWidget = makeDock(QStringLiteral("Calculations"), calculationsDock, this, false);
    calculationsDockWidget->setMinimumWidth(200);

    metadataTree = new QTreeWidget(this);
    metadataTree->setObjectName(QStringLiteral("metadataTree"));
    metadataTree->setColumnCount(2);
    metadataTree->setHeaderLabels({ QStringLiteral("Parameter"), QStringLiteral("Value") });
    metadataTree->header()->setStretchLastSection(true);
    metadataTree->setTextElideMode(Qt::ElideMiddle);
    new NameColumnLimiter(metadataTree, 0.5);
    metadataDock = makeDock(QStringLiteral("Metadata"), metadataTree, this, false);
    metadataDock->setMinimumWidth(200);

    // "Filters", "Calculations" and "Metadata" share one tabbed place with "Filters" on top;
    // "Plot Statistics" lies under them.
    addDockWidget(Qt::RightDockWidgetArea, filtersDock);
    splitDockWidget(filtersDock, statisticsDockWidget, Qt::Vertical);
    tabifyDockWidget(filtersDock, calculationsDockWidget);
    tabifyDockWidget(filtersDock, metadataDock);
    filtersDock->raise();
    resizeDocks({ filtersDock, statisticsDockWidget }, { 600, 200 }, Qt::Vertical);
    // The datasets start at their least width, so that the plot gets the room; the right docks as
    // wide as the statistics need for two columns of figures. On a small screen both give way to
    // the plot down to their least widths.
    resizeDocks({ datasetsDock, filtersDock }, { 200, 340 }, Qt::Horizontal);
}

QWidget* MainWindow::createDatasetsPanel()
{
    auto* panel = new QWidget(this);
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(4, 4, 4, 4);

    auto* modeRow = new QHBoxLayout;
    datasetViewModeCombo = new QComboBox(panel);
    datasetViewModeCombo->setObjectName(QStringLiteral("datasetViewModeCombo"));
    datasetViewModeCombo->addItems({ QStringLiteral("List"), QStringLiteral("Folders") });
    depthLabel = new QLabel(QStringLiteral("Depth:"), panel);
    depthSpinBox = new QSpinBox(panel);
    depthSpinBox->setObjectName(QStringLiteral("depthSpinBox"));
    depthSpinBox->setRange(1, 4);
    depthSpinBox->setToolTip(QStringLiteral("Number of parent folder levels to show"));
    modeRow->addWidget(datasetViewModeCombo);
    modeRow->addWidget(depthLabel);
    modeRow->addWidget(depthSpinBox);
    modeRow->addStretch(1);
    layout->addLayout(modeRow);

    datasetViewStack = new QStackedWidget(panel);
    datasetListWidget = new DatasetListWidget(datasetViewStack);
    datasetListWidget->setObjectName(QStringLiteral("datasetList"));
    datasetTreeWidget = new DatasetTreeWidget(datasetViewStack);
    datasetTreeWidget->setObjectName(QStringLiteral("datasetTree"));
    datasetViewStack->addWidget(datasetListWidget);
    datasetViewStack->addWidget(datasetTreeWidget);
    layout->addWidget(datasetViewStack, 1);

    // Mode 1 shows the folder tree, any other value the list; the depth is clamped into 1 to 4.
    QSettings settings;
    const bool folders = settings.value(SettingsKeys::datasetViewMode, 0).toInt() == 1;
    const int depth = std::clamp(settings.value(SettingsKeys::datasetViewDepth, 2).toInt(), 1, 4);
    depthSpinBox->setValue(depth);
    datasetViewModeCombo->setCurrentIndex(folders ? 1 : 0);
    datasetViewStack->setCurrentIndex(folders ? 1 : 0);
    depthLabel->setVisible(folders);
    depthSpinBox->setVisible(folders);
    return panel;
}

QWidget* MainWindow::createCentralPanel()
{
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    // Narrow margins leave the width to the plot on a small screen.
    layout->setContentsMargins(4, 4, 4, 4);

    statusLabel = new QLabel(MainWindowTexts::noFileStartText, central);
    statusLabel->setObjectName(QStringLiteral("statusLabel"));
    statusLabel->setStyleSheet(statusLabelSheet);
    // Dataset names are text, never markup; a long one wraps instead of widening the window.
    statusLabel->setTextFormat(Qt::PlainText);
    statusLabel->setWordWrap(true);
    layout->addWidget(statusLabel);

    auto* renameRow = new QHBoxLayout;
    renameEdit = new QLineEdit(central);
    renameEdit->setObjectName(QStringLiteral("renameEdit"));
    renameEdit->setPlaceholderText(QStringLiteral("Rename dataset..."));
    renameEdit->setEnabled(false);
    renameRow->addWidget(renameEdit);
    renameRow->addWidget(new QLabel(QStringLiteral("Dataset Name"), central));
    layout->addLayout(renameRow);

    layout->addWidget(createPlotSettings());

    auto* eventRow = new QHBoxLayout;
    eventRow->addWidget(new QLabel(QStringLiteral("Event:"), central));
    eventSpinBox = new QSpinBox(central);
    eventSpinBox->setObjectName(QStringLiteral("eventSpinBox"));
    eventSpinBox->setMinimumWidth(100);
    eventSpinBox->setRange(0, 0);
    eventRow->addWidget(eventSpinBox);
    eventRow->addStretch(1);
    layout->addLayout(eventRow);

    auto* splitter = new QSplitter(Qt::Horizontal, central);
    plotSplitter = splitter;
    scatterPlot = new ScatterPlot(splitter);
    scatterPlot->setObjectName(QStringLiteral("scatterPlot"));
    eventTabs = new QTabWidget(splitter);

    auto* imageSplitter = new QSplitter(Qt::Vertical, eventTabs);
    imageViewer = new ImageViewer(imageSplitter);
    imageViewer->setObjectName(QStringLiteral("imageViewer"));
    tracePlot = new TracePlot(imageSplitter);
    tracePlot->setObjectName(QStringLiteral("tracePlot"));
    imageSplitter->addWidget(imageViewer);
    imageSplitter->addWidget(tracePlot);
    imageSplitter->setStretchFactor(0, 3);
    imageSplitter->setStretchFactor(1, 1);
    // The traces stay readable in a narrow panel; the plot beside them comes first.
    tracePlot->setMinimumSize(120, 70);
    eventTabs->addTab(imageSplitter, QStringLiteral("Image"));

    eventTable = new QTableWidget(0, 2, eventTabs);
    eventTable->setObjectName(QStringLiteral("eventTable"));
    eventTable->setHorizontalHeaderLabels({ QStringLiteral("Feature"), QStringLiteral("Value") });
    eventTable->setAlternatingRowColors(true);
    eventTable->verticalHeader()->setVisible(false);
    eventTable->horizontalHeader()->setStretchLastSection(true);
    eventTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // A label too long for its column loses its middle, where the unit at its end stays readable;
    // its tool tip has all of it.
    eventTable->setTextElideMode(Qt::ElideMiddle);
    eventTable->setWordWrap(false);
    new NameColumnLimiter(eventTable, 0.6);
    eventTabs->addTab(eventTable, QStringLiteral("Event Data"));

    splitter->addWidget(scatterPlot);
    splitter->addWidget(eventTabs);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setChildrenCollapsible(false);
    // Narrower tabs than elsewhere, so that both titles stay whole beside the plot on a small screen.
    eventTabs->setStyleSheet(QStringLiteral("QTabBar::tab { padding: 6px 8px; }"));
    eventTabs->setUsesScrollButtons(false);
    layout->addWidget(splitter, 1);
    return central;
}

QWidget* MainWindow::createPlotSettings()
{
    auto* box = new QGroupBox(QStringLiteral("Plot Settings"), this);
    // The axis half and the contour half lie side by side behind a line where the width allows,
    // one above the other on a narrow screen.
    auto* axisHalf = new QWidget(box);
    auto* grid = new QGridLayout(axisHalf);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(2);

    xFeatureCombo = new QComboBox(axisHalf);
    xFeatureCombo->setObjectName(QStringLiteral("xFeatureCombo"));
    yFeatureCombo = new QComboBox(axisHalf);
    yFeatureCombo->setObjectName(QStringLiteral("yFeatureCombo"));
    colorFeatureCombo = new QComboBox(axisHalf);
    colorFeatureCombo->setObjectName(QStringLiteral("colorFeatureCombo"));
    // Wide enough for the longest common label, and no wider however large the window grows. A
    // combo's wish to show its longest item doesn't widen the window: it takes what the row gives.
    const int maxComboWidth
        = xFeatureCombo->fontMetrics().horizontalAdvance(QStringLiteral("Position along channel axis [µm]"))
        + 60;
    for (QComboBox* combo : { xFeatureCombo, yFeatureCombo, colorFeatureCombo }) {
        combo->setMinimumWidth(150);
        combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        combo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    xFeatureCombo->setMaximumWidth(maxComboWidth);
    yFeatureCombo->setMaximumWidth(maxComboWidth);
    xScaleCombo = makeScaleCombo(MainWindowTexts::xScaleToolTip, axisHalf);
    xScaleCombo->setObjectName(QStringLiteral("xScaleCombo"));
    yScaleCombo = makeScaleCombo(MainWindowTexts::yScaleToolTip, axisHalf);
    yScaleCombo->setObjectName(QStringLiteral("yScaleCombo"));

    grid->addWidget(new QLabel(QStringLiteral("X Axis"), axisHalf), 0, 0);
    grid->addWidget(xFeatureCombo, 0, 1);
    grid->addWidget(xScaleCombo, 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("Y Axis"), axisHalf), 1, 0);
    grid->addWidget(yFeatureCombo, 1, 1);
    grid->addWidget(yScaleCombo, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Color by"), axisHalf), 2, 0);
    grid->addWidget(colorFeatureCombo, 2, 1, 1, 2);
    grid->setColumnStretch(1, 1);

    // The contour controls, and the apply button beside them or, when narrow, below them.
    auto* contourHalf = new QWidget(box);
    auto* contourControls = new QWidget(contourHalf);
    auto* contourGrid = new QGridLayout(contourControls);
    contourGrid->setContentsMargins(0, 0, 0, 0);
    contourGrid->setHorizontalSpacing(3);
    contourGrid->setVerticalSpacing(2);
    contourCombo = new QComboBox(contourControls);
    contourCombo->setObjectName(QStringLiteral("contourCombo"));
    contourCombo->addItems({ QStringLiteral("Off"), QStringLiteral("Overlay"), QStringLiteral("Only") });
    innerContourSpinBox = makePercentSpinBox(10, contourControls);
    innerContourSpinBox->setObjectName(QStringLiteral("innerContourSpinBox"));
    outerContourSpinBox = makePercentSpinBox(67, contourControls);
    outerContourSpinBox->setObjectName(QStringLiteral("outerContourSpinBox"));
    isoelasticsCheckBox = new QCheckBox(QStringLiteral("Isoelastics"), contourControls);
    isoelasticsCheckBox->setToolTip(QStringLiteral("Show isoelasticity lines"));
    isoelasticsCheckBox->setObjectName(QStringLiteral("isoelasticsCheckBox"));
    isoelasticLabelsCheckBox = new QCheckBox(QStringLiteral("Labels"), contourControls);
    isoelasticLabelsCheckBox->setObjectName(QStringLiteral("isoelasticLabelsCheckBox"));
    isoelasticLabelsCheckBox->setToolTip(QStringLiteral("Show kPa labels on isoelasticity lines"));
    applyPlotSettingsButton
        = new QPushButton(QStringLiteral("Apply Plot Settings\nto All Datasets"), contourControls);
    applyPlotSettingsButton->setObjectName(QStringLiteral("applyPlotSettingsButton"));
    applyPlotSettingsButton->setToolTip(MainWindowTexts::applyButtonToolTip);
    // The button keeps its two lines whole, also in the bold of its highlight, so that lighting up
    // doesn't move the controls around it.
    applyPlotSettingsButton->setStyleSheet(MainWindowTexts::applyButtonHighlightSheet);
    applyPlotSettingsButton->setMinimumSize(applyPlotSettingsButton->sizeHint());
    applyPlotSettingsButton->setStyleSheet(QString());

    // The long label and the check boxes span two columns each, so that the spin box row below
    // them sets the width.
    // In a narrow window the long label takes two lines, so that the apply button stays beside
    // the controls.
    auto* contourLabel = new QLabel(QStringLiteral("Contour Overlay"), contourControls);
    contourLabel->setWordWrap(true);
    contourGrid->addWidget(contourLabel, 0, 0, 1, 2);
    contourGrid->addWidget(contourCombo, 0, 2, 1, 2);
    contourGrid->addWidget(new QLabel(QStringLiteral("Inner"), contourControls), 1, 0);
    contourGrid->addWidget(innerContourSpinBox, 1, 1);
    contourGrid->addWidget(new QLabel(QStringLiteral("Outer"), contourControls), 1, 2);
    contourGrid->addWidget(outerContourSpinBox, 1, 3);
    contourGrid->addWidget(isoelasticsCheckBox, 2, 0, 1, 2);
    contourGrid->addWidget(isoelasticLabelsCheckBox, 2, 2, 1, 2);
    auto* contourParts = new TwoPartLayout(contourHalf, contourControls, applyPlotSettingsButton, false);
    contourParts->setContentsMargins(0, 0, 0, 0);

    auto* halves = new TwoPartLayout(box, axisHalf, contourHalf);
    halves->setContentsMargins(2, 2, 2, 4);
    return box;
}

void MainWindow::createMenus()
{
    QMenu* fileMenu = menuBar()->addMenu(QStringLiteral("&File"));
    fileMenu->addAction(QStringLiteral("&Open..."), this, &MainWindow::openFile, QKeySequence::Open);
    fileMenu->addSeparator();
    fileMenu->addAction(QStringLiteral("&Save Session..."), this, &MainWindow::saveSession,
        QKeySequence(QStringLiteral("Ctrl+Shift+S")));
    fileMenu->addAction(QStringLiteral("&Load Session..."), this, &MainWindow::loadSession,
        QKeySequence(QStringLiteral("Ctrl+Shift+O")));
    fileMenu->addSeparator();
    fileMenu->addAction(QStringLiteral("&Clear Session"), this, &MainWindow::clearSession);
    fileMenu->addSeparator();
    fileMenu->addAction(QStringLiteral("E&xit"), this, &QWidget::close, QKeySequence::Quit);

    QMenu* exportMenu = menuBar()->addMenu(QStringLiteral("&Export"));
    exportMenu->addAction(QStringLiteral("Export &Plot..."))
        ->setShortcut(QKeySequence(QStringLiteral("Ctrl+E")));
    exportMenu->addAction(QStringLiteral("Export &Data..."), this, &MainWindow::exportData,
        QKeySequence(QStringLiteral("Ctrl+Shift+E")));
    exportMenu->addAction(QStringLiteral("Export Statistical &Summary..."));

    QMenu* viewMenu = menuBar()->addMenu(QStringLiteral("&View"));
    for (QDockWidget* dock :
        { datasetsDock, filtersDock, calculationsDockWidget, metadataDock, statisticsDockWidget })
        viewMenu->addAction(dock->toggleViewAction());

    QMenu* toolMenu = menuBar()->addMenu(QStringLiteral("&Tool Windows"));
    toolMenu->addAction(QStringLiteral("New &Combine Plot..."));
    toolMenu->addAction(QStringLiteral("New &Statistical Evaluation..."));
    toolMenu->addAction(QStringLiteral("New &Image Gallery..."));
    toolMenu->addAction(QStringLiteral("Filter Groups &Matrix..."));

    QMenu* settingsMenu = menuBar()->addMenu(QStringLiteral("&Settings"));
    QMenu* colorMapMenu = settingsMenu->addMenu(QStringLiteral("Color &Map"));
    colorMapActions = new QActionGroup(this);
    colorMapActions->setExclusive(true);
    QSettings settings;
    currentColorMapIndex = settings.value(SettingsKeys::colorMapIndex, 0).toInt();
    if (currentColorMapIndex < 0 || currentColorMapIndex >= MainWindowTexts::colorMapNames.size())
        currentColorMapIndex = 0;
    for (int i = 0; i < MainWindowTexts::colorMapNames.size(); ++i) {
        QAction* action = colorMapMenu->addAction(MainWindowTexts::colorMapNames[i]);
        action->setCheckable(true);
        action->setData(i);
        action->setChecked(i == currentColorMapIndex);
        colorMapActions->addAction(action);
    }
    scatterPlot->setColorMapIndex(currentColorMapIndex);
    settingsMenu->addSeparator();
    checkOnStartupAction = settingsMenu->addAction(QStringLiteral("Check for Updates on Startup"));
    checkOnStartupAction->setCheckable(true);
    checkOnStartupAction->setChecked(settings.value(SettingsKeys::checkOnStartup, true).toBool());

    QMenu* helpMenu = menuBar()->addMenu(QStringLiteral("&Help"));
    helpMenu->addAction(QStringLiteral("&Manual"))->setShortcut(QKeySequence::HelpContents);
    helpMenu->addSeparator();
    helpMenu->addAction(QStringLiteral("Check for &Updates..."));
    helpMenu->addAction(QStringLiteral("Send &Feedback..."));
    helpMenu->addSeparator();
    helpMenu->addAction(QStringLiteral("&About"));
}

void MainWindow::connectSignals()
{
    connect(preloadWatcher, &QFutureWatcher<void>::finished, this, &MainWindow::onFeaturesLoaded);
    // The preload's only progress: the plot's columns are in.
    connect(preloadWatcher, &QFutureWatcher<void>::progressValueChanged, this, [this] {
        showPlotWhileLoading();
        if (preloadHandOff)
            preloadHandOff->markDrawn();
    });
    connect(colorMapActions, &QActionGroup::triggered, this, &MainWindow::onColorMapSelected);
    connect(checkOnStartupAction, &QAction::toggled, this, &MainWindow::onCheckOnStartupToggled);
    connect(datasetViewModeCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &MainWindow::onDatasetViewModeChanged);
    connect(
        depthSpinBox, QOverload<int>::of(&QSpinBox::valueChanged), this, &MainWindow::onDatasetDepthChanged);
    connect(datasetListWidget, &QListWidget::currentRowChanged, this, &MainWindow::onDatasetSelected);
    connect(datasetTreeWidget, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (treeSelectionUpdating || !item || !item->data(0, Qt::UserRole).isValid())
            return;
        const DatasetEntry* entry = findDatasetById(item->data(0, Qt::UserRole).toInt());
        const auto row = std::find(datasetList.begin(), datasetList.end(), entry) - datasetList.begin();
        if (entry)
            onDatasetSelected(static_cast<int>(row));
    });
    connect(filterDock, &FilterDockWidget::filterChanged, this, [this] { requestRefresh(); });
    connectFilterDock();
    for (QComboBox* combo : { xFeatureCombo, yFeatureCombo, colorFeatureCombo })
        connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &MainWindow::updateFeatureSelection);
    for (QComboBox* combo : { xScaleCombo, yScaleCombo })
        connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &MainWindow::onScaleModeChanged);
    connect(contourCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        updateContours();
        updateApplyPlotButton();
    });
    for (QSpinBox* spin : { innerContourSpinBox, outerContourSpinBox }) {
        connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, [this] {
            updateContours();
            updateApplyPlotButton();
        });
    }
    connect(isoelasticsCheckBox, &QCheckBox::toggled, this, &MainWindow::updateIsoelastics);
    connect(isoelasticLabelsCheckBox, &QCheckBox::toggled, this, &MainWindow::updateIsoelastics);
    connect(calculationsDock, &CalculationsDockWidget::lookupTableInstalled, this,
        &MainWindow::updateIsoelastics);
    connect(applyPlotSettingsButton, &QPushButton::clicked, this, &MainWindow::onApplyPlotSettingsToAll);
    connect(
        eventSpinBox, QOverload<int>::of(&QSpinBox::valueChanged), this, &MainWindow::onEventSpinBoxChanged);
    connect(scatterPlot, &ScatterPlot::pointClicked, this, &MainWindow::onPointClicked);
    connect(imageViewer, &ImageViewer::showMaskToggled, this, &MainWindow::onMaskToggled);
    connect(renameEdit, &QLineEdit::editingFinished, this, &MainWindow::onRenameFinished);
    connect(datasetListWidget, &QWidget::customContextMenuRequested, this, &MainWindow::onDatasetContextMenu);
    connect(datasetTreeWidget, &QWidget::customContextMenuRequested, this, &MainWindow::onDatasetContextMenu);
    connect(datasetListWidget, &DatasetListWidget::internalReorderRequested, this, &MainWindow::moveDataset);
    connect(datasetTreeWidget, &DatasetTreeWidget::internalReorderRequested, this,
        &MainWindow::onTreeReorderRequested);
    connectPolygonSignals();

    // A dock of the tabbed place that comes into view repaints the plot once the layout has
    // settled; the metadata tree is filled only when it is seen, so a hidden tab costs nothing.
    for (QDockWidget* dock : { filtersDock, calculationsDockWidget, metadataDock }) {
        connect(dock, &QDockWidget::visibilityChanged, this, [this, dock](bool visible) {
            if (!visible)
                return;
            QTimer::singleShot(0, scatterPlot, [this] { scatterPlot->replot(); });
            if (dock == metadataDock && metadataTree->topLevelItemCount() == 0)
                fillMetadataTree();
        });
    }
}

} // namespace Tessaly
