#include "ui/CalculationsDockWidget.h"

#include "calc/MeasurementMedium.h"
#include "io/VQDMetadata.h"
#include "ui/CalculationsTexts.h"
#include "ui/LookupTablePanel.h"
#include "ui/SpilloverTable.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace Tessaly {

namespace {

constexpr double defaultChannelWidth = 20.0;
constexpr double defaultFlowRate = 0.04;
constexpr double defaultTemperature = 23.0;

std::size_t jobIndex(CalculationJob job)
{
    return static_cast<std::size_t>(job);
}

// A number of the metadata, or nothing when the key is absent or its text isn't a number.
bool metadataNumber(const std::map<std::string, std::string>& section, const char* key, double* value)
{
    const auto it = section.find(key);
    if (it == section.end())
        return false;
    bool ok = false;
    const double parsed = QString::fromStdString(it->second).trimmed().toDouble(&ok);
    if (ok)
        *value = parsed;
    return ok;
}

QString sizeText(const std::map<std::string, std::string>& section, const char* key, const QString& format)
{
    double value = 0.0;
    if (metadataNumber(section, key, &value) && value > 0.0)
        return format.arg(QString::number(value, 'g'));
    return CalculationsTexts::noValue;
}

QString modelName(int model)
{
    switch (model) {
    case ViscosityHerold2017:
        return CalculationsTexts::heroldModel;
    case ViscosityKestin1978:
        return CalculationsTexts::kestinModel;
    default:
        return CalculationsTexts::manualModel;
    }
}

// A page in a scroll area, so that a short dock never cuts a control off.
QScrollArea* scrollablePage(QWidget* content)
{
    auto* area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(content);
    // Rows are never cut at the side: the page is at least as wide as its controls need.
    area->setMinimumWidth(content->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    return area;
}

QLabel* valueLabel(QWidget* parent)
{
    auto* label = new QLabel(CalculationsTexts::noValue, parent);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

CalculationsDockWidget::CalculationsDockWidget(EModulus* emodulus, QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);

    pageCombo = new QComboBox(this);
    pageCombo->setObjectName(QStringLiteral("calculationPageCombo"));
    pageCombo->addItems({ CalculationsTexts::emodulusPage, CalculationsTexts::compensationPage,
        CalculationsTexts::refinementPage, CalculationsTexts::fourierPage });
    // The longest page name would otherwise set the dock's least width.
    pageCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    pageCombo->setMinimumContentsLength(12);
    // A narrow dock may cut the longest name; the tool tip always has it whole.
    connect(pageCombo, &QComboBox::currentTextChanged, pageCombo, &QWidget::setToolTip);
    pageCombo->setToolTip(pageCombo->currentText());
    layout->addWidget(pageCombo);

    pages = new QStackedWidget(this);
    pages->addWidget(scrollablePage(createEmodulusPage(emodulus)));
    pages->addWidget(scrollablePage(createCompensationPage()));
    pages->addWidget(scrollablePage(createRefinementPage()));
    pages->addWidget(scrollablePage(createFourierPage()));
    layout->addWidget(pages, 1);
    connect(pageCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), pages,
        &QStackedWidget::setCurrentIndex);

    progress = new QProgressBar(this);
    progress->setObjectName(QStringLiteral("calculationProgress"));
    progress->setRange(0, 100);
    progress->setValue(0);
    progress->setFormat(CalculationsTexts::progressFormat);
    progress->setTextVisible(true);
    progress->hide();
    layout->addWidget(progress);

    const std::pair<CalculationJob, void (CalculationsDockWidget::*)()> starts[] = {
        { CalculationJob::Emodulus, &CalculationsDockWidget::computeEmodulus },
        { CalculationJob::Compensation, &CalculationsDockWidget::compensateCrosstalk },
        { CalculationJob::Refinement, &CalculationsDockWidget::refineFluorescence },
        { CalculationJob::Fourier, &CalculationsDockWidget::computeFourierDeform },
    };
    for (const auto& [job, signal] : starts)
        connect(startButton(job), &QPushButton::clicked, this, signal);
    connect(assessButton, &QPushButton::clicked, this, &CalculationsDockWidget::assessEmodQuality);
    connect(showRefinedBox, &QCheckBox::toggled, this, &CalculationsDockWidget::traceDisplayChanged);
    updateButtons();
}

QWidget* CalculationsDockWidget::createEmodulusPage(EModulus* emodulus)
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("emodulusPage"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 4, 0, 4);
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    layout->addLayout(form);

    mediumLabel = valueLabel(page);
    mediumLabel->setObjectName(QStringLiteral("mediumLabel"));
    mediumLabel->setWordWrap(true);
    form->addRow(CalculationsTexts::mediumRow, mediumLabel);

    viscosityCombo = new QComboBox(page);
    viscosityCombo->setObjectName(QStringLiteral("viscosityCombo"));
    viscosityCombo->addItem(CalculationsTexts::heroldModel, ViscosityHerold2017);
    form->addRow(CalculationsTexts::viscosityRow, viscosityCombo);

    viscositySpinBox = new QDoubleSpinBox(page);
    viscositySpinBox->setObjectName(QStringLiteral("viscositySpinBox"));
    viscositySpinBox->setRange(0.001, 1000.0);
    viscositySpinBox->setDecimals(3);
    viscositySpinBox->setValue(1.0);
    viscositySpinBox->setSuffix(CalculationsTexts::viscositySuffix);
    form->addRow(CalculationsTexts::etaRow, viscositySpinBox);

    temperatureSpinBox = new QDoubleSpinBox(page);
    temperatureSpinBox->setObjectName(QStringLiteral("temperatureSpinBox"));
    temperatureSpinBox->setRange(0.0, 50.0);
    temperatureSpinBox->setDecimals(1);
    temperatureSpinBox->setValue(defaultTemperature);
    temperatureSpinBox->setSuffix(CalculationsTexts::temperatureSuffix);
    form->addRow(CalculationsTexts::temperatureRow, temperatureSpinBox);
    // The three sources take a row of their own: beside the value they don't fit a narrow dock.
    auto* sources = new QWidget(page);
    auto* sourceRow = new QHBoxLayout(sources);
    sourceRow->setContentsMargins(0, 0, 0, 0);
    sourceRow->setSpacing(8);
    manualRadio = new QRadioButton(CalculationsTexts::manualSource, sources);
    metaRadio = new QRadioButton(CalculationsTexts::metaSource, sources);
    eventRadio = new QRadioButton(CalculationsTexts::eventSource, sources);
    manualRadio->setObjectName(QStringLiteral("manualTemperatureRadio"));
    metaRadio->setObjectName(QStringLiteral("metaTemperatureRadio"));
    eventRadio->setObjectName(QStringLiteral("eventTemperatureRadio"));
    temperatureSources = new QButtonGroup(this);
    for (QRadioButton* radio : { manualRadio, metaRadio, eventRadio }) {
        temperatureSources->addButton(radio);
        sourceRow->addWidget(radio);
    }
    sourceRow->addStretch(1);
    metaRadio->setChecked(true);
    form->addRow(sources);

    channelWidthLabel = valueLabel(page);
    channelWidthLabel->setObjectName(QStringLiteral("channelWidthLabel"));
    flowRateLabel = valueLabel(page);
    flowRateLabel->setObjectName(QStringLiteral("flowRateLabel"));
    pixelSizeLabel = valueLabel(page);
    pixelSizeLabel->setObjectName(QStringLiteral("pixelSizeLabel"));
    form->addRow(CalculationsTexts::channelWidthRow, channelWidthLabel);
    form->addRow(CalculationsTexts::flowRateRow, flowRateLabel);
    form->addRow(CalculationsTexts::pixelSizeRow, pixelSizeLabel);

    deformSourceLabel = new QLabel(CalculationsTexts::deformSourceRow, page);
    deformSourceCombo = new QComboBox(page);
    deformSourceCombo->setObjectName(QStringLiteral("deformSourceCombo"));
    deformSourceCombo->setToolTip(CalculationsTexts::deformSourceToolTip);
    deformSourceCombo->addItem(CalculationsTexts::deformationSource, QStringLiteral("deform"));
    form->addRow(deformSourceLabel, deformSourceCombo);
    deformSourceLabel->hide();
    deformSourceCombo->hide();

    auto& applyAll = applyToAllBoxes[jobIndex(CalculationJob::Emodulus)];
    applyAll = new QCheckBox(CalculationsTexts::applyToAll, page);
    applyAll->setObjectName(QStringLiteral("emodulusApplyToAll"));
    layout->addWidget(applyAll);
    auto& start = startButtons[jobIndex(CalculationJob::Emodulus)];
    start = new QPushButton(CalculationsTexts::computeEmodulus, page);
    start->setObjectName(QStringLiteral("computeEmodulusButton"));
    layout->addWidget(start);
    assessButton = new QPushButton(CalculationsTexts::assessQuality, page);
    assessButton->setObjectName(QStringLiteral("assessQualityButton"));
    assessButton->setToolTip(CalculationsTexts::assessQualityToolTip);
    layout->addWidget(assessButton);
    useFilteredBox = new QCheckBox(CalculationsTexts::useFilteredData, page);
    useFilteredBox->setObjectName(QStringLiteral("useFilteredData"));
    useFilteredBox->setToolTip(CalculationsTexts::useFilteredDataToolTip);
    useFilteredBox->setChecked(true);
    layout->addWidget(useFilteredBox);
    // Fields take what width the dock gives; sized for their widest value they would push the page
    // past a narrow dock's edge.
    for (QWidget* field : std::initializer_list<QWidget*> {
             viscosityCombo, viscositySpinBox, temperatureSpinBox, deformSourceCombo })
        field->setMinimumWidth(90);
    for (QComboBox* combo : { viscosityCombo, deformSourceCombo })
        combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    // Which table the modulus comes from, or that there is none. Below the controls, so that they
    // stay in view in a short dock; its long paths and formulas wrap or clip rather than widen the
    // page.
    tablePanel = new LookupTablePanel(emodulus, page);
    tablePanel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addSpacing(6);
    layout->addWidget(tablePanel);
    connect(
        tablePanel, &LookupTablePanel::tableInstalled, this, &CalculationsDockWidget::lookupTableInstalled);
    layout->addStretch(1);

    connect(viscosityCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        updateTemperatureControl();
        updateViscosity();
    });
    connect(temperatureSpinBox, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
        &CalculationsDockWidget::updateViscosity);
    connect(temperatureSources, QOverload<QAbstractButton*, bool>::of(&QButtonGroup::buttonToggled), this,
        [this](QAbstractButton*, bool checked) {
            if (!checked)
                return;
            updateTemperatureControl();
            updateViscosity();
        });
    updateTemperatureControl();
    updateViscosity();
    return page;
}

QWidget* CalculationsDockWidget::createCompensationPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("compensationPage"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 4, 0, 4);
    spilloverTable = new SpilloverTable(page);
    spilloverTable->setObjectName(QStringLiteral("spilloverTable"));
    layout->addWidget(spilloverTable);
    auto& applyAll = applyToAllBoxes[jobIndex(CalculationJob::Compensation)];
    applyAll = new QCheckBox(CalculationsTexts::applyToAll, page);
    applyAll->setObjectName(QStringLiteral("compensationApplyToAll"));
    layout->addWidget(applyAll);
    auto& start = startButtons[jobIndex(CalculationJob::Compensation)];
    start = new QPushButton(CalculationsTexts::compensateCrosstalk, page);
    start->setObjectName(QStringLiteral("compensateButton"));
    layout->addWidget(start);
    layout->addStretch(1);
    return page;
}

QWidget* CalculationsDockWidget::createRefinementPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("refinementPage"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 4, 0, 4);

    struct FilterRow
    {
        const QString& name;
        bool on;
        int maximum;
        int k;
        const QString& boxToolTip;
        const QString& spinToolTip;
    };
    const FilterRow rows[] = {
        { CalculationsTexts::hampel1, true, 50, 5, CalculationsTexts::halfWindowToolTip,
            CalculationsTexts::halfWindowToolTip },
        { CalculationsTexts::hampel2, true, 50, 11, CalculationsTexts::halfWindowToolTip,
            CalculationsTexts::halfWindowToolTip },
        { CalculationsTexts::median, false, 50, 3, CalculationsTexts::medianToolTip,
            CalculationsTexts::halfWindowToolTip },
        { CalculationsTexts::rolling, false, 50, 3, CalculationsTexts::rollingToolTip,
            CalculationsTexts::halfWindowToolTip },
        { CalculationsTexts::savitzkyGolay, true, 20, 3, CalculationsTexts::savitzkyGolayToolTip,
            CalculationsTexts::savitzkyGolayToolTip },
    };
    auto* group = new QGroupBox(CalculationsTexts::traceFilters, page);
    auto* grid = new QGridLayout(group);
    grid->setColumnStretch(0, 1);
    for (std::size_t i = 0; i < filterBoxes.size(); ++i) {
        const FilterRow& row = rows[i];
        auto* box = new QCheckBox(row.name, group);
        box->setObjectName(QStringLiteral("traceFilter%1").arg(i));
        box->setChecked(row.on);
        box->setToolTip(row.boxToolTip);
        auto* spin = new QSpinBox(group);
        spin->setObjectName(QStringLiteral("traceFilterWindow%1").arg(i));
        spin->setRange(1, row.maximum);
        spin->setValue(row.k);
        spin->setToolTip(row.spinToolTip);
        const int r = static_cast<int>(i);
        grid->addWidget(box, r, 0);
        grid->addWidget(new QLabel(CalculationsTexts::halfWindowLabel, group), r, 1);
        grid->addWidget(spin, r, 2);
        filterBoxes[i] = box;
        halfWindowSpinBoxes[i] = spin;
    }
    layout->addWidget(group);

    auto* form = new QFormLayout;
    flMaxThresholdSpinBox = new QDoubleSpinBox(page);
    flMaxThresholdSpinBox->setObjectName(QStringLiteral("flMaxThreshold"));
    flMaxThresholdSpinBox->setRange(0.0, 10000.0);
    flMaxThresholdSpinBox->setDecimals(0);
    flMaxThresholdSpinBox->setValue(400.0);
    flMaxThresholdSpinBox->setToolTip(CalculationsTexts::flMaxThresholdToolTip);
    form->addRow(CalculationsTexts::flMaxThresholdRow, flMaxThresholdSpinBox);
    layout->addLayout(form);

    auto& applyAll = applyToAllBoxes[jobIndex(CalculationJob::Refinement)];
    applyAll = new QCheckBox(CalculationsTexts::applyToAll, page);
    applyAll->setObjectName(QStringLiteral("refinementApplyToAll"));
    layout->addWidget(applyAll);
    auto& start = startButtons[jobIndex(CalculationJob::Refinement)];
    start = new QPushButton(CalculationsTexts::refineFluorescence, page);
    start->setObjectName(QStringLiteral("refineButton"));
    layout->addWidget(start);
    showRefinedBox = new QCheckBox(CalculationsTexts::showRefinedTrace, page);
    showRefinedBox->setObjectName(QStringLiteral("showRefinedTrace"));
    showRefinedBox->setChecked(true);
    showRefinedBox->setToolTip(CalculationsTexts::showRefinedTraceToolTip);
    layout->addWidget(showRefinedBox);
    layout->addStretch(1);
    return page;
}

QWidget* CalculationsDockWidget::createFourierPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("fourierPage"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 4, 0, 4);
    auto* note = new QLabel(CalculationsTexts::fourierNote, page);
    note->setObjectName(QStringLiteral("fourierNote"));
    note->setWordWrap(true);
    note->setStyleSheet(QStringLiteral("QLabel { color: gray; font-size: 10px; }"));
    layout->addWidget(note);
    auto& applyAll = applyToAllBoxes[jobIndex(CalculationJob::Fourier)];
    applyAll = new QCheckBox(CalculationsTexts::applyToAll, page);
    applyAll->setObjectName(QStringLiteral("fourierApplyToAll"));
    layout->addWidget(applyAll);
    auto& start = startButtons[jobIndex(CalculationJob::Fourier)];
    start = new QPushButton(CalculationsTexts::computeFourier, page);
    start->setObjectName(QStringLiteral("fourierButton"));
    layout->addWidget(start);
    layout->addStretch(1);
    return page;
}

void CalculationsDockWidget::setDataset(DatasetEntry* dataset)
{
    currentDataset = dataset;
    if (!dataset) {
        available.fill(false);
        emodApplied = false;
    }
    updateButtons();
}

void CalculationsDockWidget::setDatasetMetadata(const VQDMetadata& metadata, bool hasTemperatureFeature)
{
    channelWidthLabel->setText(
        sizeText(metadata.setup, "channel width", CalculationsTexts::micrometreFormat));
    flowRateLabel->setText(sizeText(metadata.setup, "flow rate", CalculationsTexts::flowRateFormat));
    pixelSizeLabel->setText(sizeText(metadata.imaging, "pixel size", CalculationsTexts::micrometreFormat));

    const auto mediumText = metadata.setup.find("medium");
    const MeasurementMedium medium
        = lookUpMedium(mediumText == metadata.setup.end() ? std::string() : mediumText->second);
    mediumCode = medium.code;
    mediumLabel->setText(QString::fromStdString(medium.displayText));
    {
        const QSignalBlocker blocker(viscosityCombo);
        viscosityCombo->clear();
        viscosityCombo->addItem(modelName(medium.viscosityModel), medium.viscosityModel);
    }

    double temperature = 0.0;
    metadataTemperature = metadataNumber(metadata.setup, "temperature", &temperature) && temperature > 0.0
        ? temperature
        : defaultTemperature;

    eventRadio->setEnabled(hasTemperatureFeature);
    if (!hasTemperatureFeature && eventRadio->isChecked()) {
        const QSignalBlocker blocker(temperatureSources);
        metaRadio->setChecked(true);
    }
    updateTemperatureControl();
    updateViscosity();
}

void CalculationsDockWidget::fillDeformationSources(bool offered, bool hasFc, bool hasOdd)
{
    const QVariant former = deformSourceCombo->currentData();
    {
        const QSignalBlocker blocker(deformSourceCombo);
        deformSourceCombo->clear();
        deformSourceCombo->addItem(CalculationsTexts::deformationSource, QStringLiteral("deform"));
        if (hasFc)
            deformSourceCombo->addItem(CalculationsTexts::deformationFcSource, QStringLiteral("deform_fc"));
        if (hasOdd)
            deformSourceCombo->addItem(CalculationsTexts::deformationOddSource, QStringLiteral("deform_odd"));
        const int found = deformSourceCombo->findData(former);
        deformSourceCombo->setCurrentIndex(found >= 0 ? found : 0);
    }
    deformSourceOffered = offered && (hasFc || hasOdd);
    deformSourceLabel->setVisible(deformSourceOffered);
    deformSourceCombo->setVisible(deformSourceOffered);
}

// The temperature control follows its source: hidden for per-event temperatures, read-only at the
// measurement's temperature for "Meta", editable for "Manual".
void CalculationsDockWidget::updateTemperatureControl()
{
    const bool manualViscosity = viscosityCombo->currentData().toInt() == ViscosityManual;
    viscositySpinBox->setReadOnly(!manualViscosity);
    viscositySpinBox->setButtonSymbols(
        manualViscosity ? QAbstractSpinBox::UpDownArrows : QAbstractSpinBox::NoButtons);

    temperatureSpinBox->setVisible(!eventRadio->isChecked());
    const bool meta = metaRadio->isChecked();
    temperatureSpinBox->setReadOnly(meta);
    temperatureSpinBox->setButtonSymbols(meta ? QAbstractSpinBox::NoButtons : QAbstractSpinBox::UpDownArrows);
    if (meta) {
        const QSignalBlocker blocker(temperatureSpinBox);
        temperatureSpinBox->setValue(metadataTemperature);
    }
}

void CalculationsDockWidget::updateViscosity()
{
    const int model = viscosityCombo->currentData().toInt();
    if (model == ViscosityManual)
        return;
    EModulusParams params;
    params.viscosityModel = model;
    params.medium = mediumCode;
    params.temperature = temperatureSpinBox->value();
    const double width = labelValue(channelWidthLabel, CalculationsTexts::micrometreSuffix);
    const double flow = labelValue(flowRateLabel, CalculationsTexts::flowRateSuffix);
    params.channelWidth = width > 0.0 ? width : defaultChannelWidth;
    params.flowRate = flow > 0.0 ? flow : defaultFlowRate;
    const QSignalBlocker blocker(viscositySpinBox);
    viscositySpinBox->setValue(EModulus::viscosity(params, params.temperature));
}

double CalculationsDockWidget::labelValue(const QLabel* label, const QString& suffix) const
{
    QString text = label->text();
    text.remove(suffix);
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    return ok ? value : 0.0;
}

EModulusParams CalculationsDockWidget::emodulusParams() const
{
    EModulusParams params;
    params.medium = mediumCode;
    params.viscosityModel = viscosityCombo->currentData().toInt();
    params.viscosity = viscositySpinBox->value();
    params.temperature = temperatureSpinBox->value();
    params.temperatureSource = eventRadio->isChecked() ? TemperatureEvent
        : metaRadio->isChecked()                       ? TemperatureMeta
                                                       : TemperatureManual;
    params.channelWidth = labelValue(channelWidthLabel, CalculationsTexts::micrometreSuffix);
    params.flowRate = labelValue(flowRateLabel, CalculationsTexts::flowRateSuffix);
    params.pixelSize = labelValue(pixelSizeLabel, CalculationsTexts::micrometreSuffix);
    const QString source = deformSourceCombo->currentData().toString();
    params.deformFeature = deformSourceOffered && !source.isEmpty() ? source.toStdString() : "deform";
    params.pixelationCorrection = params.deformFeature == "deform";
    return params;
}

EModulusParams CalculationsDockWidget::emodulusParamsFor(const VQDMetadata& metadata, bool allowEvent) const
{
    // Sizes, medium, model and the measurement's temperature from the dataset's own metadata; media
    // without a model of their own take the viscosity the user entered.
    EModulusParams params = emodulusParamsFromMetadata(metadata, false, viscositySpinBox->value());
    if (eventRadio->isChecked() && allowEvent) {
        params.temperatureSource = TemperatureEvent;
        params.temperature = temperatureSpinBox->value();
    } else if (!metaRadio->isChecked()) {
        params.temperatureSource = TemperatureManual;
        params.temperature = temperatureSpinBox->value();
    }
    return params;
}

FLRefinementParams CalculationsDockWidget::fluorescenceParams() const
{
    FLRefinementParams params;
    params.hampel1 = filterBoxes[0]->isChecked();
    params.hampel1HalfWindow = halfWindowSpinBoxes[0]->value();
    params.hampel2 = filterBoxes[1]->isChecked();
    params.hampel2HalfWindow = halfWindowSpinBoxes[1]->value();
    params.median = filterBoxes[2]->isChecked();
    params.medianHalfWindow = halfWindowSpinBoxes[2]->value();
    params.rolling = filterBoxes[3]->isChecked();
    params.rollingHalfWindow = halfWindowSpinBoxes[3]->value();
    params.savitzkyGolay = filterBoxes[4]->isChecked();
    params.savitzkyGolayHalfWindow = halfWindowSpinBoxes[4]->value();
    params.hampel1Threshold = 3.0f;
    params.hampel2Threshold = 3.0f;
    params.flMaxThreshold = flMaxThresholdSpinBox->value();
    return params;
}

std::vector<std::vector<double>> CalculationsDockWidget::spilloverMatrix() const
{
    return spilloverTable->matrix();
}

void CalculationsDockWidget::setSpilloverMatrix(const std::vector<std::vector<double>>& matrix)
{
    spilloverTable->setMatrix(matrix);
}

void CalculationsDockWidget::setRefinementAvailable(bool hasChannels)
{
    available[jobIndex(CalculationJob::Refinement)] = hasChannels;
    updateButtons();
}

void CalculationsDockWidget::setCompensationChannels(const std::vector<int>& channels)
{
    // A table the user is editing stays as it is while the same channels come again.
    if (channels != spilloverTable->channels())
        spilloverTable->setChannels(channels);
    available[jobIndex(CalculationJob::Compensation)] = channels.size() >= 2;
    updateButtons();
}

void CalculationsDockWidget::setEmodulusAvailable(bool isAvailable, bool applied)
{
    available[jobIndex(CalculationJob::Emodulus)] = isAvailable;
    emodApplied = applied;
    updateButtons();
}

void CalculationsDockWidget::setFourierAvailable(bool hasMasks)
{
    available[jobIndex(CalculationJob::Fourier)] = hasMasks;
    updateButtons();
}

void CalculationsDockWidget::setJobRunning(CalculationJob job, bool isRunning)
{
    running[jobIndex(job)] = isRunning;
    updateButtons();
}

bool CalculationsDockWidget::isJobRunning(CalculationJob job) const
{
    return running[jobIndex(job)];
}

void CalculationsDockWidget::updateButtons()
{
    for (std::size_t i = 0; i < startButtons.size(); ++i)
        startButtons[i]->setEnabled(currentDataset && available[i] && !running[i]);
    // The assessment reads the modulus, which a running computation is about to replace.
    assessButton->setEnabled(currentDataset && emodApplied && !running[jobIndex(CalculationJob::Emodulus)]);
}

bool CalculationsDockWidget::applyToAll(CalculationJob job) const
{
    return applyToAllBoxes[jobIndex(job)]->isChecked();
}

bool CalculationsDockWidget::useFilteredData() const
{
    return useFilteredBox->isChecked();
}

bool CalculationsDockWidget::showRefinedTrace() const
{
    return showRefinedBox->isChecked();
}

QPushButton* CalculationsDockWidget::startButton(CalculationJob job) const
{
    return startButtons[jobIndex(job)];
}

QWidget* CalculationsDockWidget::page(CalculationJob job) const
{
    auto* area = static_cast<QScrollArea*>(pages->widget(static_cast<int>(job)));
    return area->widget();
}

void CalculationsDockWidget::showPage(CalculationJob job)
{
    pageCombo->setCurrentIndex(static_cast<int>(job));
}

} // namespace Tessaly
