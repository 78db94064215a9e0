// The frame of the main window: docks, central widget and menus, and the signal connections.
#include "plot/ImageViewer.h"
#include "plot/ScatterPlot.h"
#include "plot/TracePlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/DatasetListWidget.h"
#include "ui/DatasetTreeWidget.h"
#include "ui/FilterDockWidget.h"
#include "ui/MainWindow.h"
#include "ui/StatisticsDockWidget.h"

#include <QAction>
#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QFrame>
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

    statusLabel = new QLabel(MainWindowTexts::noFileStartText, central);
    statusLabel->setObjectName(QStringLiteral("statusLabel"));
    statusLabel->setStyleSheet(statusLabelSheet);
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
    eventTabs->addTab(imageSplitter, QStringLiteral("Image"));

    eventTable = new QTableWidget(0, 2, eventTabs);
    eventTable->setObjectName(QStringLiteral("eventTable"));
    eventTable->setHorizontalHeaderLabels({ QStringLiteral("Feature"), QStringLiteral("Value") });
    eventTable->setAlternatingRowColors(true);
    eventTable->verticalHeader()->setVisible(false);
    eventTable->horizontalHeader()->setStretchLastSection(true);
    eventTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    eventTabs->addTab(eventTable, QStringLiteral("Event Data"));

    splitter->addWidget(scatterPlot);
    splitter->addWidget(eventTabs);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    layout->addWidget(splitter, 1);
    return central;
}

QWidget* MainWindow::createPlotSettings()
{
    auto* box = new QGroupBox(QStringLiteral("Plot Settings"), this);
    auto* grid = new QGridLayout(box);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(2);

    xFeatureCombo = new QComboBox(box);
    xFeatureCombo->setObjectName(QStringLiteral("xFeatureCombo"));
    yFeatureCombo = new QComboBox(box);
    yFeatureCombo->setObjectName(QStringLiteral("yFeatureCombo"));
    colorFeatureCombo = new QComboBox(box);
    colorFeatureCombo->setObjectName(QStringLiteral("colorFeatureCombo"));
    // Wide enough for the longest common label, and no wider however large the window grows.
    const int maxComboWidth
        = xFeatureCombo->fontMetrics().horizontalAdvance(QStringLiteral("Position along channel axis [µm]"))
        + 60;
    for (QComboBox* combo : { xFeatureCombo, yFeatureCombo }) {
        combo->setMinimumWidth(150);
        combo->setMaximumWidth(maxComboWidth);
    }
    xScaleCombo = makeScaleCombo(MainWindowTexts::xScaleToolTip, box);
    xScaleCombo->setObjectName(QStringLiteral("xScaleCombo"));
    yScaleCombo = makeScaleCombo(MainWindowTexts::yScaleToolTip, box);
    yScaleCombo->setObjectName(QStringLiteral("yScaleCombo"));

    grid->addWidget(new QLabel(QStringLiteral("X Axis"), box), 0, 0);
    grid->addWidget(xFeatureCombo, 0, 1);
    grid->addWidget(xScaleCombo, 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("Y Axis"), box), 1, 0);
    grid->addWidget(yFeatureCombo, 1, 1);
    grid->addWidget(yScaleCombo, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Color by"), box), 2, 0);
    grid->addWidget(colorFeatureCombo, 2, 1, 1, 2);

    auto* line = new QFrame(box);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    grid->addWidget(line, 0, 3, 3, 1);

    contourCombo = new QComboBox(box);
    contourCombo->setObjectName(QStringLiteral("contourCombo"));
    contourCombo->addItems({ QStringLiteral("Off"), QStringLiteral("Overlay"), QStringLiteral("Only") });
    innerContourSpinBox = makePercentSpinBox(10, box);
    innerContourSpinBox->setObjectName(QStringLiteral("innerContourSpinBox"));
    outerContourSpinBox = makePercentSpinBox(67, box);
    outerContourSpinBox->setObjectName(QStringLiteral("outerContourSpinBox"));
    isoelasticsCheckBox = new QCheckBox(QStringLiteral("Isoelastics"), box);
    isoelasticsCheckBox->setToolTip(QStringLiteral("Show isoelasticity lines"));
    isoelasticsCheckBox->setObjectName(QStringLiteral("isoelasticsCheckBox"));
    isoelasticLabelsCheckBox = new QCheckBox(QStringLiteral("Labels"), box);
    isoelasticLabelsCheckBox->setObjectName(QStringLiteral("isoelasticLabelsCheckBox"));
    isoelasticLabelsCheckBox->setToolTip(QStringLiteral("Show kPa labels on isoelasticity lines"));
    applyPlotSettingsButton = new QPushButton(QStringLiteral("Apply Plot Settings\nto All Datasets"), box);
    applyPlotSettingsButton->setObjectName(QStringLiteral("applyPlotSettingsButton"));
    applyPlotSettingsButton->setToolTip(MainWindowTexts::applyButtonToolTip);

    grid->addWidget(new QLabel(QStringLiteral("Contour Overlay"), box), 0, 4);
    grid->addWidget(contourCombo, 0, 5, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Inner"), box), 1, 4);
    grid->addWidget(innerContourSpinBox, 1, 5);
    grid->addWidget(new QLabel(QStringLiteral("Outer"), box), 1, 6);
    grid->addWidget(outerContourSpinBox, 1, 7);
    grid->addWidget(isoelasticsCheckBox, 2, 4);
    grid->addWidget(isoelasticLabelsCheckBox, 2, 5);
    grid->addWidget(applyPlotSettingsButton, 0, 8, 3, 1);
    grid->setColumnStretch(9, 1);
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
    exportMenu->addAction(QStringLiteral("Export &Data..."))
        ->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+E")));
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
    connect(filterDock, &FilterDockWidget::filterChanged, this, &MainWindow::onFilterChanged);
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
