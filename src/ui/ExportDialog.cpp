#include "ui/ExportDialog.h"

#include "core/DatasetEntry.h"
#include "core/FeatureCatalogue.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <set>

namespace Tessaly {

namespace {

// Features and data that only other datasets have are shown in grey.
const QColor elsewhereColor(160, 160, 160);

bool usable(const DatasetEntry* entry)
{
    return entry && entry->reader && entry->reader->isOpen();
}

void setGrey(QCheckBox* box, bool grey)
{
    box->setStyleSheet(
        grey ? QStringLiteral("QCheckBox { color: %1; }").arg(elsewhereColor.name()) : QString());
}

} // namespace

ExportDialog::ExportDialog(const DatasetEntry* dataset, const std::vector<DatasetEntry*>& datasets,
    bool expertMode, QWidget* parent, const ExportConfig* lastConfig)
    : QDialog(parent)
    , current(dataset)
{
    setWindowTitle(ExportTexts::dialogTitle);
    auto* layout = new QVBoxLayout(this);
    // Scope and format side by side, so that the feature list keeps the height on small screens.
    auto* choiceRow = new QHBoxLayout;
    choiceRow->addWidget(createScopeGroup(static_cast<int>(datasets.size())), 1);
    choiceRow->addWidget(createFormatGroup(expertMode), 1);
    layout->addLayout(choiceRow);
    layout->addWidget(aviGroup);
    layout->addWidget(createFeatureGroup(datasets), 1);
    layout->addWidget(createNonScalarGroup(datasets));
    layout->addWidget(createDirectoryGroup());

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(ExportTexts::exportButton, QDialogButtonBox::AcceptRole)->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    if (lastConfig)
        applyConfig(*lastConfig);
    updateAvailability();
    // As tall as the screen allows, so that many features are in sight without scrolling.
    const QScreen* screen = parent ? parent->screen() : QGuiApplication::primaryScreen();
    const QRect available = screen ? screen->availableGeometry() : QRect(0, 0, 1024, 700);
    resize(std::clamp(available.width() - 60, 600, 880), std::clamp(available.height() - 80, 480, 800));
}

QGroupBox* ExportDialog::createScopeGroup(int datasetCount)
{
    auto* group = new QGroupBox(ExportTexts::scopeGroup, this);
    auto* layout = new QVBoxLayout(group);
    currentOnlyRadio = new QRadioButton(ExportTexts::currentOnly, group);
    currentOnlyRadio->setChecked(true);
    allDatasetsRadio = new QRadioButton(ExportTexts::allDatasets.arg(datasetCount), group);
    allDatasetsRadio->setEnabled(datasetCount >= 2);
    layout->addWidget(currentOnlyRadio);
    layout->addWidget(allDatasetsRadio);
    connect(allDatasetsRadio, &QRadioButton::toggled, this, &ExportDialog::onScopeChanged);
    return group;
}

QGroupBox* ExportDialog::createFormatGroup(bool expertMode)
{
    auto* group = new QGroupBox(ExportTexts::formatGroup, this);
    auto* layout = new QVBoxLayout(group);
    vqdRadio = new QRadioButton(ExportTexts::vqdFormat, group);
    vqdRadio->setChecked(true);
    tsvRadio = new QRadioButton(ExportTexts::tsvFormat, group);
    aviRadio = new QRadioButton(ExportTexts::aviFormat, group);
    for (QRadioButton* radio : { vqdRadio, tsvRadio, aviRadio }) {
        layout->addWidget(radio);
        connect(radio, &QRadioButton::toggled, this, [this](bool on) {
            if (on)
                onFormatChanged();
        });
    }
    layout->addStretch(1);

    aviGroup = new QGroupBox(ExportTexts::aviGroup, this);
    auto* aviLayout = new QVBoxLayout(aviGroup);
    auto* codecRow = new QHBoxLayout;
    mjpegRadio = new QRadioButton(ExportTexts::mjpeg, aviGroup);
    mjpegRadio->setChecked(true);
    rawRadio = new QRadioButton(ExportTexts::raw, aviGroup);
    codecRow->addWidget(mjpegRadio);
    codecRow->addWidget(rawRadio);
    codecRow->addStretch(1);
    aviLayout->addLayout(codecRow);
    skipDuplicatesBox = new QCheckBox(ExportTexts::skipDuplicates, aviGroup);
    aviLayout->addWidget(skipDuplicatesBox);
    reanalysisBox = new QCheckBox(ExportTexts::reanalysis, aviGroup);
    reanalysisBox->setVisible(expertMode);
    aviLayout->addWidget(reanalysisBox);
    return group;
}

QGroupBox* ExportDialog::createFeatureGroup(const std::vector<DatasetEntry*>& datasets)
{
    auto* group = new QGroupBox(ExportTexts::featuresGroup, this);
    auto* layout = new QVBoxLayout(group);
    auto* buttonRow = new QHBoxLayout;
    selectAllButton = new QPushButton(ExportTexts::selectAll, group);
    deselectAllButton = new QPushButton(ExportTexts::deselectAll, group);
    buttonRow->addWidget(selectAllButton);
    buttonRow->addWidget(deselectAllButton);
    buttonRow->addStretch(1);
    layout->addLayout(buttonRow);
    connect(selectAllButton, &QPushButton::clicked, this, &ExportDialog::onSelectAll);
    connect(deselectAllButton, &QPushButton::clicked, this, &ExportDialog::onDeselectAll);

    // The union of every dataset's scalar features; the label comes from a dataset that has it,
    // the current one first, since instrument files label some columns their own way.
    std::map<std::string, const DatasetEntry*> owners;
    for (const DatasetEntry* entry : datasets) {
        if (!usable(entry))
            continue;
        for (const std::string& name : entry->reader->featureNames())
            if (isScalarFeature(name) && owners.count(name) == 0)
                owners[name] = entry;
    }
    auto* scroll = new QScrollArea(group);
    scroll->setWidgetResizable(true);
    auto* list = new QWidget(scroll);
    featureGrid = new QGridLayout(list);
    featureGrid->setVerticalSpacing(2);
    for (const auto& [name, owner] : owners) {
        FeatureBox feature;
        feature.inCurrent = usable(current) && current->reader->hasFeature(name);
        const DatasetEntry* labelSource = feature.inCurrent ? current : owner;
        const QString label = QString::fromStdString(labelSource->reader->featureLabel(name));
        feature.box = new QCheckBox(label + QStringLiteral("  [") + QString::fromStdString(name) + ']', list);
        feature.box->setChecked(feature.inCurrent);
        setGrey(feature.box, !feature.inCurrent);
        featureBoxes[name] = feature;
    }
    scroll->setWidget(list);
    layout->addWidget(scroll, 1);
    return group;
}

QGroupBox* ExportDialog::createNonScalarGroup(const std::vector<DatasetEntry*>& datasets)
{
    auto* group = new QGroupBox(ExportTexts::nonScalarGroup, this);
    auto* layout = new QHBoxLayout(group);
    struct Kind
    {
        NonScalarBox* box;
        const QString* text;
        bool (VQDReader::*has)() const;
    };
    for (const Kind& kind : { Kind { &imagesBox, &ExportTexts::images, &VQDReader::hasImage },
             Kind { &masksBox, &ExportTexts::masks, &VQDReader::hasMask },
             Kind { &tracesBox, &ExportTexts::traces, &VQDReader::hasTraces } }) {
        kind.box->box = new QCheckBox(*kind.text, group);
        kind.box->inCurrent = usable(current) && (*current->reader.*kind.has)();
        for (const DatasetEntry* entry : datasets)
            kind.box->inAny = kind.box->inAny || (usable(entry) && (*entry->reader.*kind.has)());
        layout->addWidget(kind.box->box);
        QCheckBox* box = kind.box->box;
        NonScalarBox* state = kind.box;
        // Only the user's own clicks count as a choice; formats that force a state don't.
        connect(box, &QCheckBox::clicked, this, [state](bool on) { state->chosen = on; });
    }
    layout->addStretch(1);
    return group;
}

QGroupBox* ExportDialog::createDirectoryGroup()
{
    auto* group = new QGroupBox(ExportTexts::directoryGroup, this);
    auto* layout = new QVBoxLayout(group);
    customDirectoryBox = new QCheckBox(ExportTexts::customDirectory, group);
    layout->addWidget(customDirectoryBox);
    auto* row = new QHBoxLayout;
    directoryEdit = new QLineEdit(group);
    browseButton = new QPushButton(ExportTexts::browse, group);
    row->addWidget(directoryEdit, 1);
    row->addWidget(browseButton);
    layout->addLayout(row);
    directoryEdit->setEnabled(false);
    browseButton->setEnabled(false);
    connect(customDirectoryBox, &QCheckBox::toggled, directoryEdit, &QWidget::setEnabled);
    connect(customDirectoryBox, &QCheckBox::toggled, browseButton, &QWidget::setEnabled);
    connect(browseButton, &QPushButton::clicked, this, &ExportDialog::onBrowseDir);
    return group;
}

void ExportDialog::applyConfig(const ExportConfig& config)
{
    if (config.allDatasets && allDatasetsRadio->isEnabled())
        allDatasetsRadio->setChecked(true);
    (config.avi ? aviRadio : config.tsv ? tsvRadio : vqdRadio)->setChecked(true);
    (config.mjpeg ? mjpegRadio : rawRadio)->setChecked(true);
    skipDuplicatesBox->setChecked(config.skipDuplicates);
    reanalysisBox->setChecked(config.reanalysis && reanalysisBox->isVisibleTo(this));
    for (auto& [name, feature] : featureBoxes)
        feature.box->setChecked(config.features.contains(QString::fromStdString(name)));
    imagesBox.chosen = config.images;
    masksBox.chosen = config.masks;
    tracesBox.chosen = config.traces;
    customDirectoryBox->setChecked(config.customDirectory);
    directoryEdit->setText(config.directory);
}

ExportConfig ExportDialog::config() const
{
    ExportConfig config;
    for (const auto& [name, feature] : featureBoxes)
        if (feature.box->isChecked())
            config.features.append(QString::fromStdString(name));
    config.images = imagesBox.box->isChecked();
    config.masks = masksBox.box->isChecked();
    config.traces = tracesBox.box->isChecked();
    config.tsv = tsvRadio->isChecked();
    config.avi = aviRadio->isChecked();
    config.mjpeg = mjpegRadio->isChecked();
    config.skipDuplicates = skipDuplicatesBox->isChecked();
    config.reanalysis = reanalysisBox->isVisibleTo(this) && reanalysisBox->isChecked();
    config.customDirectory = customDirectoryBox->isChecked();
    config.directory = directoryEdit->text();
    config.allDatasets = allDatasetsRadio->isChecked();
    return config;
}

QCheckBox* ExportDialog::featureCheckBox(const std::string& name) const
{
    const auto found = featureBoxes.find(name);
    return found == featureBoxes.end() ? nullptr : found->second.box;
}

// The boxes in sight, in two columns filled top to bottom, so that the list is read in key order
// without gaps where hidden boxes stand.
void ExportDialog::layoutFeatures()
{
    std::vector<QCheckBox*> shown;
    for (auto& [name, feature] : featureBoxes) {
        featureGrid->removeWidget(feature.box);
        if (!feature.box->isHidden())
            shown.push_back(feature.box);
    }
    const int rows = static_cast<int>((shown.size() + 1) / 2);
    for (int i = 0; i < static_cast<int>(shown.size()); ++i)
        featureGrid->addWidget(
            shown[static_cast<std::size_t>(i)], i % std::max(rows, 1), i / std::max(rows, 1));
    featureGrid->setRowStretch(rows, 1);
}

bool ExportDialog::videoChosen() const
{
    return aviRadio->isChecked();
}

void ExportDialog::onBrowseDir()
{
    const QString folder
        = QFileDialog::getExistingDirectory(this, ExportTexts::directoryGroup, directoryEdit->text());
    if (!folder.isEmpty())
        directoryEdit->setText(folder);
}

void ExportDialog::onSelectAll()
{
    for (auto& [name, feature] : featureBoxes)
        if (!feature.box->isHidden())
            feature.box->setChecked(true);
}

void ExportDialog::onDeselectAll()
{
    for (auto& [name, feature] : featureBoxes)
        if (!feature.box->isHidden())
            feature.box->setChecked(false);
}

void ExportDialog::onScopeChanged()
{
    updateAvailability();
}

void ExportDialog::onFormatChanged()
{
    updateAvailability();
}

void ExportDialog::updateAvailability()
{
    const bool all = allDatasetsRadio->isChecked();
    const bool video = videoChosen();
    const bool table = tsvRadio->isChecked();
    aviGroup->setVisible(video);

    // A video holds images only: no feature is chosen there.
    selectAllButton->setEnabled(!video);
    deselectAllButton->setEnabled(!video);
    for (auto& [name, feature] : featureBoxes) {
        feature.box->setHidden(!all && !feature.inCurrent);
        feature.box->setEnabled(!video);
        feature.box->setToolTip(feature.inCurrent ? QString() : ExportTexts::otherDatasetsTip);
    }
    layoutFeatures();

    for (NonScalarBox* kind : { &imagesBox, &masksBox, &tracesBox }) {
        QCheckBox* box = kind->box;
        setGrey(box, false);
        if (video) {
            const bool image = kind == &imagesBox;
            box->setEnabled(false);
            box->setChecked(image);
            box->setToolTip(image ? ExportTexts::imagesAlwaysTip : ExportTexts::onlyImagesTip);
        } else if (table) {
            box->setEnabled(false);
            box->setChecked(false);
            box->setToolTip(ExportTexts::notInTsvTip);
        } else {
            const bool available = kind->inCurrent || (all && kind->inAny);
            box->setEnabled(available);
            box->setChecked(available && kind->chosen);
            const bool elsewhere = available && !kind->inCurrent;
            box->setToolTip(elsewhere ? ExportTexts::otherDatasetsTip : QString());
            setGrey(box, elsewhere);
        }
    }
}

} // namespace Tessaly
