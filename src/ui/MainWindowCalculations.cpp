// The calculations: the jobs that the calculations dock asks for, run one at a time on the global
// thread pool, and how their results reach the datasets and the views.
#include "calc/EModulus.h"
#include "calc/FLCompensation.h"
#include "calc/FLRefinement.h"
#include "calc/FourierDeform.h"
#include "core/DatasetEntry.h"
#include "core/PoolRun.h"
#include "io/Hdf5Mutex.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/CalculationsTexts.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QMetaObject>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <algorithm>
#include <cctype>
#include <memory>

namespace Tessaly {

namespace {

bool endsWith(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size()
        && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

std::string setupValue(const DatasetEntry& entry, const char* key)
{
    const auto it = entry.metadata.setup.find(key);
    return it == entry.metadata.setup.end() ? std::string() : it->second;
}

bool inReservoir(const DatasetEntry& entry)
{
    return setupValue(entry, "chip region") == "reservoir";
}

// The fluorescence channels of a dataset: N of every feature named exactly "fl" + digits + "_max",
// ascending.
std::vector<int> fluorescenceChannels(VQDReader& reader)
{
    std::vector<int> channels;
    for (const std::string& name : reader.featureNames()) {
        if (name.size() < 7 || name.compare(0, 2, "fl") != 0 || !endsWith(name, "_max"))
            continue;
        const std::string digits = name.substr(2, name.size() - 6);
        if (digits.empty() || digits.size() > 9
            || !std::all_of(digits.begin(), digits.end(), [](char c) { return std::isdigit(c); }))
            continue;
        channels.push_back(std::stoi(digits));
    }
    std::sort(channels.begin(), channels.end());
    return channels;
}

std::string channelFeature(int channel, const char* suffix)
{
    return "fl" + std::to_string(channel) + suffix;
}

bool hasComputedRefinement(VQDReader& reader)
{
    const std::vector<std::string>& names = reader.featureNames();
    return std::any_of(names.begin(), names.end(), [&reader](const std::string& name) {
        return name.size() > 7 && endsWith(name, "_rf") && reader.isComputedFeature(name);
    });
}

bool hasComputedCompensation(VQDReader& reader, const std::vector<int>& channels)
{
    return std::all_of(channels.begin(), channels.end(),
        [&reader](int channel) { return reader.isComputedFeature(channelFeature(channel, "_max_ctc")); });
}

// The temperature of a measurement, when its metadata states one as a number.
bool metadataTemperature(const DatasetEntry& entry, double* temperature)
{
    bool ok = false;
    const double value = QString::fromStdString(setupValue(entry, "temperature")).trimmed().toDouble(&ok);
    if (ok)
        *temperature = value;
    return ok;
}

} // namespace

// One dataset's part of a job. The job keeps the reader and a copy of what it needs, so that the
// dataset may be removed, or the session cleared, while the job runs: the work then finishes on a
// reader that no view uses any more, and the result finds no dataset to mark.
struct CalculationTask
{
    int datasetId = -1;
    std::shared_ptr<VQDReader> reader;
    VQDMetadata metadata;
    EModulusParams emodulusParams;
};

// What a job's work reports to its finish action, one flag per task.
using CalculationResults = std::shared_ptr<std::vector<char>>;

namespace {

// The work of a job: the engine call for each task in turn, with the dataset's place in the run on
// the progress bar when there is more than one.
template <typename Engine, typename Call>
std::function<void()> calculationWork(Engine* engine, QProgressBar* bar, std::vector<CalculationTask> tasks,
    CalculationResults results, Call call)
{
    QObject::disconnect(engine, nullptr, bar, nullptr);
    QObject::connect(engine, &Engine::progressChanged, bar, &QProgressBar::setValue);
    // Every name list is sorted now, on this thread, so that the work's reads of it don't sort it
    // while the interface reads it too.
    for (const CalculationTask& task : tasks)
        task.reader->featureNames();
    results->assign(tasks.size(), 0);
    return [engine, tasks = std::move(tasks), results, call, progress = QPointer<QProgressBar>(bar)] {
        const std::size_t count = tasks.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (count > 1) {
                const QString format = CalculationsTexts::batchProgressFormat.arg(i + 1).arg(count);
                QMetaObject::invokeMethod(
                    progress,
                    [progress, format] {
                        if (progress)
                            progress->setFormat(format);
                    },
                    Qt::QueuedConnection);
            }
            (*results)[i] = call(engine, tasks[i]) ? 1 : 0;
        }
    };
}

std::vector<int> taskIds(const std::vector<CalculationTask>& tasks)
{
    std::vector<int> ids;
    for (const CalculationTask& task : tasks)
        ids.push_back(task.datasetId);
    return ids;
}

} // namespace

void MainWindow::createCalculationEngines()
{
    flRefinement = new FLRefinement(this);
    flCompensation = new FLCompensation(this);
    fourierDeform = new FourierDeform(this);
    connect(calculationWatcher, &QFutureWatcher<void>::finished, this, &MainWindow::onCalcFinished);
    connect(calculationsDock, &CalculationsDockWidget::refineFluorescence, this,
        &MainWindow::onRefineFluorescence);
    connect(calculationsDock, &CalculationsDockWidget::compensateCrosstalk, this,
        &MainWindow::onCompensateCrosstalk);
    connect(calculationsDock, &CalculationsDockWidget::computeEmodulus, this, &MainWindow::onComputeEmodulus);
    connect(calculationsDock, &CalculationsDockWidget::computeFourierDeform, this,
        &MainWindow::onComputeFourierDeform);
    connect(calculationsDock, &CalculationsDockWidget::traceDisplayChanged, this, [this] {
        preferRefinedTraces = calculationsDock->showRefinedTrace();
        DatasetEntry* entry = activeEntry();
        if (!entry || !entry->featuresLoaded)
            return;
        setupTraceChannels(*entry);
        if (entry->currentEventIndex >= 0)
            showEventTraces(entry->currentEventIndex);
    });
}

// The engines run on pool threads; they must not be destroyed under a running job.
void MainWindow::waitForCalculation()
{
    if (calcBusy)
        calculationWatcher->waitForFinished();
}

DatasetEntry* MainWindow::calculationTarget() const
{
    DatasetEntry* entry = activeEntry();
    if (!entry || !entry->featuresLoaded || !entry->reader || calcBusy)
        return nullptr;
    return entry;
}

void MainWindow::runCalculation(std::function<void()> work, std::function<void()> finish)
{
    if (calcBusy)
        return;
    calcBusy = true;
    calcFinish = std::move(finish);
    QProgressBar* bar = calculationsDock->progressBar();
    bar->setValue(0);
    bar->setFormat(CalculationsTexts::progressFormat);
    bar->show();
    calculationWatcher->setFuture(runOnPool([work = std::move(work)](QFutureInterface<void>&) { work(); }));
}

void MainWindow::onCalcFinished()
{
    calculationsDock->progressBar()->hide();
    calcBusy = false;
    const std::function<void()> finish = std::move(calcFinish);
    calcFinish = nullptr;
    if (finish)
        finish();
    // A dataset shown during the job may wait for features that only a free engine can rebuild.
    if (DatasetEntry* entry = activeEntry(); entry && entry->featuresLoaded)
        rebuildRestoredFeatures(*entry);
}

// What every job does when it ends: its flag for each dataset still there whose engine call
// succeeded, the question for stale plots, and the refresh of every view of features.
void MainWindow::finishCalculation(CalculationJob job, const std::vector<int>& datasetIds,
    const CalculationResults& results, std::function<bool(const std::string&)> changed,
    std::function<void(DatasetEntry&)> mark)
{
    calculationsDock->setJobRunning(job, false);
    for (std::size_t i = 0; i < datasetIds.size() && i < results->size(); ++i) {
        if (!(*results)[i])
            continue;
        if (DatasetEntry* entry = findDatasetById(datasetIds[i]))
            mark(*entry);
    }
    zoomResetCheck = std::move(changed);
    DatasetEntry* active = activeEntry();
    if (active && active->featuresLoaded) {
        VQDReader& reader = *active->reader;
        if (job == CalculationJob::Emodulus)
            calculationsDock->setEmodulusAvailable(
                !inReservoir(*active) && reader.hasFeature("area_um") && reader.hasFeature("deform"),
                active->emodApplied);
        if (job == CalculationJob::Fourier)
            calculationsDock->fillDeformationSources(
                expertModeAction != nullptr, reader.hasFeature("deform_fc"), reader.hasFeature("deform_odd"));
        if (job == CalculationJob::Refinement)
            setupTraceChannels(*active);
    }
    refreshFeaturesAndPlot();
    // Combine and statistical evaluation windows follow here once they exist.
    if (job == CalculationJob::Refinement && active && active->featuresLoaded
        && active->currentEventIndex >= 0)
        showEventTraces(active->currentEventIndex);
}

void MainWindow::onRefineFluorescence()
{
    DatasetEntry* selected = calculationTarget();
    if (!selected)
        return;
    std::vector<CalculationTask> tasks;
    const auto add = [&tasks](const DatasetEntry& entry) {
        tasks.push_back({ entry.id, entry.reader, entry.metadata, {} });
    };
    if (calculationsDock->applyToAll(CalculationJob::Refinement)) {
        for (const DatasetEntry* entry : datasetList) {
            if (entry->featuresLoaded && entry->reader && entry->reader->hasTraces())
                add(*entry);
        }
    } else {
        add(*selected);
    }
    if (tasks.empty())
        return;
    const FLRefinementParams params = calculationsDock->fluorescenceParams();
    auto results = std::make_shared<std::vector<char>>();
    const std::vector<int> ids = taskIds(tasks);
    calculationsDock->setJobRunning(CalculationJob::Refinement, true);
    runCalculation(calculationWork(flRefinement, calculationsDock->progressBar(), std::move(tasks), results,
                       [params](FLRefinement* engine, const CalculationTask& task) {
                           return engine->refine(task.reader.get(), task.metadata, params);
                       }),
        [this, ids, results] {
            finishCalculation(
                CalculationJob::Refinement, ids, results,
                [](const std::string& name) { return endsWith(name, "_rf"); },
                [](DatasetEntry& entry) { entry.flRefinementApplied = true; });
        });
}

void MainWindow::onCompensateCrosstalk()
{
    DatasetEntry* selected = calculationTarget();
    if (!selected)
        return;
    const std::vector<int> channels = fluorescenceChannels(*selected->reader);
    if (channels.size() < 2)
        return;
    const std::vector<std::vector<double>> matrix = calculationsDock->spilloverMatrix();
    if (matrix.size() != channels.size())
        return;
    std::vector<CalculationTask> tasks;
    if (calculationsDock->applyToAll(CalculationJob::Compensation)) {
        for (const DatasetEntry* entry : datasetList) {
            if (entry->featuresLoaded && entry->reader && fluorescenceChannels(*entry->reader) == channels)
                tasks.push_back({ entry->id, entry->reader, entry->metadata, {} });
        }
    } else {
        tasks.push_back({ selected->id, selected->reader, selected->metadata, {} });
    }
    auto results = std::make_shared<std::vector<char>>();
    const std::vector<int> ids = taskIds(tasks);
    calculationsDock->setJobRunning(CalculationJob::Compensation, true);
    runCalculation(calculationWork(flCompensation, calculationsDock->progressBar(), std::move(tasks), results,
                       [channels, matrix](FLCompensation* engine, const CalculationTask& task) {
                           return engine->compensate(task.reader.get(), channels, matrix);
                       }),
        [this, ids, results, channels, matrix] {
            finishCalculation(
                CalculationJob::Compensation, ids, results,
                [](const std::string& name) { return endsWith(name, "_max_ctc"); },
                [channels, matrix](DatasetEntry& entry) {
                    entry.ctcApplied = true;
                    entry.ctcChannels = channels;
                    entry.spilloverMatrix = matrix;
                });
        });
}

void MainWindow::onComputeEmodulus()
{
    DatasetEntry* selected = calculationTarget();
    if (!selected)
        return;
    std::vector<CalculationTask> tasks;
    if (calculationsDock->applyToAll(CalculationJob::Emodulus)) {
        const std::string chosen = calculationsDock->emodulusParams().deformFeature;
        for (const DatasetEntry* entry : datasetList) {
            if (!entry->featuresLoaded || !entry->reader || inReservoir(*entry))
                continue;
            VQDReader& reader = *entry->reader;
            const std::string deform = chosen != "deform" && reader.hasFeature(chosen) ? chosen : "deform";
            if (!reader.hasFeature("area_um") || !reader.hasFeature(deform))
                continue;
            EModulusParams params
                = calculationsDock->emodulusParamsFor(entry->metadata, reader.hasFeature("temp"));
            params.deformFeature = deform;
            params.pixelationCorrection = deform == "deform";
            tasks.push_back({ entry->id, entry->reader, entry->metadata, params });
        }
    } else {
        if (inReservoir(*selected)) {
            calculationsDock->setEmodulusAvailable(false, selected->emodApplied);
            return;
        }
        EModulusParams params = calculationsDock->emodulusParams();
        double temperature = 0.0;
        if (params.temperatureSource == 2 && metadataTemperature(*selected, &temperature))
            params.temperature = temperature;
        // A size the metadata doesn't state reads as 0 on the dock; the job takes the instrument's
        // usual one instead, as for every dataset of a batch, rather than a modulus of infinity.
        const EModulusParams defaults;
        if (!(params.channelWidth > 0.0))
            params.channelWidth = defaults.channelWidth;
        if (!(params.flowRate > 0.0))
            params.flowRate = defaults.flowRate;
        if (!(params.pixelSize > 0.0))
            params.pixelSize = defaults.pixelSize;
        tasks.push_back({ selected->id, selected->reader, selected->metadata, params });
    }
    if (tasks.empty())
        return;
    auto results = std::make_shared<std::vector<char>>();
    const std::vector<int> ids = taskIds(tasks);
    calculationsDock->setJobRunning(CalculationJob::Emodulus, true);
    runCalculation(calculationWork(emodulusEngine, calculationsDock->progressBar(), std::move(tasks), results,
                       [](EModulus* engine, const CalculationTask& task) {
                           return engine->compute(task.reader.get(), task.emodulusParams);
                       }),
        [this, ids, results] {
            finishCalculation(
                CalculationJob::Emodulus, ids, results,
                [](const std::string& name) { return name == "emodulus"; },
                [](DatasetEntry& entry) { entry.emodApplied = true; });
        });
}

void MainWindow::onComputeFourierDeform()
{
    DatasetEntry* selected = calculationTarget();
    if (!selected)
        return;
    const bool all = calculationsDock->applyToAll(CalculationJob::Fourier);
    std::vector<CalculationTask> tasks;
    for (const DatasetEntry* entry : datasetList) {
        if ((all || entry == selected) && entry->featuresLoaded && entry->reader && entry->reader->hasMask())
            tasks.push_back({ entry->id, entry->reader, entry->metadata, {} });
    }
    if (tasks.empty()) {
        MessageBoxes::warning(this, CalculationsTexts::fourierTitle,
            all ? CalculationsTexts::noMasksInAnyDataset : CalculationsTexts::noMasksInDataset);
        return;
    }
    auto results = std::make_shared<std::vector<char>>();
    const std::vector<int> ids = taskIds(tasks);
    calculationsDock->setJobRunning(CalculationJob::Fourier, true);
    runCalculation(calculationWork(fourierDeform, calculationsDock->progressBar(), std::move(tasks), results,
                       [](FourierDeform* engine, const CalculationTask& task) {
                           return engine->compute(task.reader.get());
                       }),
        [this, ids, results] {
            finishCalculation(
                CalculationJob::Fourier, ids, results,
                [](const std::string& name) {
                    return name == "deform_odd" || name == "deform_even" || name == "deform_fc";
                },
                [](DatasetEntry& entry) { entry.fourierApplied = true; });
        });
}

// Hands the dataset that has just become active to the dock: which jobs it allows, its channels and
// metadata, and rebuilds what a restored session says was computed.
void MainWindow::updateCalculationsDock(DatasetEntry& entry)
{
    VQDReader& reader = *entry.reader;
    const std::vector<int> channels = fluorescenceChannels(reader);
    calculationsDock->setDataset(&entry);
    calculationsDock->setRefinementAvailable(!channels.empty());
    calculationsDock->setCompensationChannels(channels.size() >= 2 ? channels : std::vector<int>());
    rebuildRestoredFeatures(entry);
    calculationsDock->setEmodulusAvailable(
        !inReservoir(entry) && reader.hasFeature("area_um") && reader.hasFeature("deform"),
        entry.emodApplied);
    calculationsDock->setDatasetMetadata(entry.metadata, reader.hasFeature("temp"));
    calculationsDock->fillDeformationSources(
        expertModeAction != nullptr, reader.hasFeature("deform_fc"), reader.hasFeature("deform_odd"));
    calculationsDock->setFourierAvailable(reader.hasMask());
}

// Sessions keep which calculations ran and with what, not their results: a restored dataset gets its
// refined and compensated features again, at once, when it is shown. The refinement takes the default
// settings, since those of the first run aren't kept. While a job runs the engines are busy; the
// rebuild then waits for the job's end.
void MainWindow::rebuildRestoredFeatures(DatasetEntry& entry)
{
    if (calcBusy)
        return;
    VQDReader& reader = *entry.reader;
    const std::vector<int> channels = fluorescenceChannels(reader);
    if (!channels.empty() && entry.flRefinementApplied && !hasComputedRefinement(reader))
        flRefinement->refine(&reader, entry.metadata, FLRefinementParams());

    const bool keptMatrixFits = entry.ctcApplied && entry.ctcChannels == channels && channels.size() >= 2
        && entry.spilloverMatrix.size() == channels.size();
    if (!keptMatrixFits)
        return;
    calculationsDock->setSpilloverMatrix(entry.spilloverMatrix);
    if (!hasComputedCompensation(reader, channels))
        flCompensation->compensate(&reader, channels, entry.spilloverMatrix);
}

} // namespace Tessaly
