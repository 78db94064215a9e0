#include "DemoLookupTable.h"
#include "MainWindowFixture.h"
#include "calc/EModulus.h"
#include "io/Hdf5Mutex.h"
#include "plot/ScatterPlot.h"
#include "support/FixtureWriter.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/CalculationsTexts.h"
#include "ui/SpilloverTable.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCryptographicHash>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <atomic>
#include <cmath>
#include <mutex>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;
using Tessaly::Testing::MainWindowFixture;

namespace {

using Columns = std::vector<std::pair<std::string, std::vector<double>>>;

struct FileContents
{
    Columns columns;
    std::map<std::string, std::string> attributes;
    bool masks = false;
    bool traces = false;
};

constexpr std::size_t eventCount = 6;

// Columns of a dataset with fluorescence channels 1..channels.
Columns fluorescenceColumns(int channels)
{
    Columns columns = { { "area_um", { 30, 42, 55, 61, 70, 88 } },
        { "deform", { 0.01, 0.02, 0.015, 0.03, 0.025, 0.04 } } };
    for (int c = 1; c <= channels; ++c) {
        std::vector<double> peak, position;
        for (std::size_t i = 0; i < eventCount; ++i) {
            peak.push_back(500.0 + 100.0 * c + 10.0 * static_cast<double>(i));
            position.push_back(40.0 + static_cast<double>(i));
        }
        columns.push_back({ "fl" + std::to_string(c) + "_max", peak });
        columns.push_back({ "fl" + std::to_string(c) + "_pos", position });
    }
    return columns;
}

// A filled ellipse per event, so that every mask has one outline.
std::vector<std::uint8_t> ellipseMasks(std::size_t count, int height, int width)
{
    std::vector<std::uint8_t> pixels;
    for (std::size_t e = 0; e < count; ++e) {
        const double a = 10.0 + static_cast<double>(e);
        const double b = 7.0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double dx = (x - width / 2.0) / a;
                const double dy = (y - height / 2.0) / b;
                pixels.push_back(dx * dx + dy * dy <= 1.0 ? 255 : 0);
            }
        }
    }
    return pixels;
}

} // namespace

class MainWindowCalculations : public MainWindowFixture
{
protected:
    QString writeFile(const QString& name, const FileContents& contents)
    {
        const QString path = folder.filePath(name);
        FixtureWriter writer(path.toStdString());
        for (const auto& [feature, values] : contents.columns)
            writer.column<double>(feature, values);
        if (contents.masks) {
            const std::vector<std::uint8_t> pixels = ellipseMasks(eventCount, 30, 60);
            writer.imageStack("image", eventCount, 30, 60, pixels);
            writer.imageStack("mask", eventCount, 30, 60, pixels);
        }
        if (contents.traces) {
            std::vector<std::vector<std::int16_t>> rows;
            for (std::size_t i = 0; i < eventCount; ++i) {
                std::vector<std::int16_t> row(100, 10);
                row[40 + i] = 600;
                rows.push_back(row);
            }
            writer.trace<std::int16_t>("fl1_raw", rows).trace<std::int16_t>("fl2_raw", rows);
        }
        writer.stringAttribute("setup:module composition", "Vortiq, Fluorescence")
            .stringAttribute("experiment:sample", name.toStdString());
        for (const auto& [key, value] : contents.attributes)
            writer.stringAttribute(key, value);
        writer.close();
        return path;
    }

    QString writeChannels(const QString& name, int channels, bool masks = false)
    {
        return writeFile(name, { fluorescenceColumns(channels), {}, masks, false });
    }

    void open(const QStringList& paths)
    {
        for (const QString& path : paths)
            window->openDataset(path);
        ASSERT_TRUE(waitUntilIdle());
        ASSERT_EQ(window->datasets().size(), static_cast<std::size_t>(paths.size()));
        select(0);
    }

    void select(int row) { window->findChild<QListWidget*>("datasetList")->setCurrentRow(row); }

    DatasetEntry* dataset(int row) { return window->datasets()[static_cast<std::size_t>(row)]; }

    CalculationsDockWidget* dock() { return window->calcDock(); }
    QPushButton* button(CalculationJob job) { return dock()->startButton(job); }

    bool waitForJob()
    {
        return QTest::qWaitFor([this] { return !window->isCalculationRunning(); }, 30000);
    }

    static QByteArray fingerprint(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
    }

    void checkApplyToAll(CalculationJob job, bool on)
    {
        auto* box
            = dock()->findChild<QCheckBox*>(job == CalculationJob::Compensation ? "compensationApplyToAll"
                    : job == CalculationJob::Fourier                            ? "fourierApplyToAll"
                    : job == CalculationJob::Refinement                         ? "refinementApplyToAll"
                                                                                : "emodulusApplyToAll");
        ASSERT_NE(box, nullptr);
        box->setChecked(on);
    }
};

// While a job runs its button is off, and the busy flag refuses whatever else would start: the
// slot called directly, and any other work handed to the runner.
TEST_F(MainWindowCalculations, SecondStartDuringARunHasNoEffect)
{
    makeWindow();
    open({ writeChannels("two.vqd", 2) });
    ASSERT_TRUE(button(CalculationJob::Compensation)->isEnabled());

    button(CalculationJob::Compensation)->click();
    EXPECT_TRUE(window->isCalculationRunning());
    EXPECT_FALSE(button(CalculationJob::Compensation)->isEnabled());
    EXPECT_FALSE(dock()->progressBar()->isHidden());

    std::atomic<bool> otherWorkRan { false };
    bool otherFinishRan = false;
    window->onCompensateCrosstalk();
    window->runCalculation(
        [&otherWorkRan] { otherWorkRan = true; }, [&otherFinishRan] { otherFinishRan = true; });

    ASSERT_TRUE(waitForJob());
    EXPECT_FALSE(otherWorkRan);
    EXPECT_FALSE(otherFinishRan);
    EXPECT_TRUE(dock()->progressBar()->isHidden());
    EXPECT_TRUE(button(CalculationJob::Compensation)->isEnabled());
    EXPECT_TRUE(dataset(0)->ctcApplied);

    // The runner takes work again once the job is over.
    bool finished = false;
    window->runCalculation([] {}, [&finished] { finished = true; });
    EXPECT_TRUE(QTest::qWaitFor([&finished] { return finished; }, 30000));
}

// "Apply to All Datasets" compensates the datasets whose channels are those of the selected one,
// keeps the channels and matrix with each, and puts the new features into the feature lists. The
// files themselves never change.
TEST_F(MainWindowCalculations, CompensationOfAllTakesDatasetsWithTheSameChannels)
{
    makeWindow();
    const QStringList paths
        = { writeChannels("a.vqd", 2), writeChannels("b.vqd", 3), writeChannels("c.vqd", 2) };
    std::vector<QByteArray> before;
    for (const QString& path : paths)
        before.push_back(fingerprint(path));
    open(paths);
    checkApplyToAll(CalculationJob::Compensation, true);
    auto* table = dock()->findChild<SpilloverTable*>("spilloverTable");
    ASSERT_EQ(table->rowCount(), 2);

    button(CalculationJob::Compensation)->click();
    ASSERT_TRUE(waitForJob());

    const std::vector<std::vector<double>> identity = { { 1, 0 }, { 0, 1 } };
    for (int row : { 0, 2 }) {
        SCOPED_TRACE(row);
        const DatasetEntry& entry = *dataset(row);
        EXPECT_TRUE(entry.ctcApplied);
        EXPECT_EQ(entry.ctcChannels, (std::vector<int> { 1, 2 }));
        EXPECT_EQ(entry.spilloverMatrix, identity);
        // Identity spillover leaves every value as it was.
        EXPECT_EQ(entry.reader->getFeature("fl2_max_ctc"), entry.reader->getFeature("fl2_max"));
    }
    EXPECT_FALSE(dataset(1)->ctcApplied);
    EXPECT_FALSE(dataset(1)->reader->hasFeature("fl1_max_ctc"));
    EXPECT_GE(window->findChild<QComboBox*>("xFeatureCombo")->findData(QStringLiteral("fl1_max_ctc")), 0);
    for (int i = 0; i < paths.size(); ++i)
        EXPECT_EQ(fingerprint(paths[i]), before[static_cast<std::size_t>(i)]) << paths[i].toStdString();
}

// Without masks nothing starts and the user is told why, in the words of the single or the batch job.
TEST_F(MainWindowCalculations, FourierWithoutMasksWarnsAndStartsNothing)
{
    makeWindow();
    open({ writeChannels("plain.vqd", 1) });
    EXPECT_FALSE(button(CalculationJob::Fourier)->isEnabled());
    for (const bool all : { false, true }) {
        messages.clear();
        checkApplyToAll(CalculationJob::Fourier, all);
        window->onComputeFourierDeform();
        EXPECT_FALSE(window->isCalculationRunning());
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].title, "Fourier Deformation");
        EXPECT_EQ(messages[0].text,
            all ? CalculationsTexts::noMasksInAnyDataset : CalculationsTexts::noMasksInDataset);
    }
}

// A batch shows which dataset of how many is being worked on; datasets without masks are left out.
TEST_F(MainWindowCalculations, FourierBatchShowsItsDatasetCountAndSkipsDatasetsWithoutMasks)
{
    makeWindow();
    const QString first = writeChannels("m1.vqd", 1, true);
    const QStringList paths = { first, writeChannels("plain.vqd", 1), writeChannels("m2.vqd", 1, true) };
    const QByteArray before = fingerprint(first);
    open(paths);
    checkApplyToAll(CalculationJob::Fourier, true);
    QProgressBar* bar = dock()->progressBar();
    {
        // The job's reads of the file wait for this lock, so the first dataset stays in progress.
        std::unique_lock<std::recursive_mutex> hold(hdf5Mutex());
        button(CalculationJob::Fourier)->click();
        EXPECT_TRUE(QTest::qWaitFor(
            [bar] { return bar->format() == QStringLiteral("Dataset 1 of 2 — %p%"); }, 30000));
        EXPECT_FALSE(bar->isHidden());
    }
    ASSERT_TRUE(waitForJob());
    EXPECT_TRUE(bar->isHidden());
    EXPECT_EQ(bar->format(), QStringLiteral("Dataset 2 of 2 — %p%"));
    EXPECT_TRUE(dataset(0)->fourierApplied);
    EXPECT_FALSE(dataset(1)->fourierApplied);
    EXPECT_TRUE(dataset(2)->fourierApplied);
    for (const char* feature : { "deform_odd", "deform_even", "deform_fc" }) {
        EXPECT_TRUE(dataset(2)->reader->isComputedFeature(feature)) << feature;
        EXPECT_FALSE(dataset(1)->reader->hasFeature(feature)) << feature;
    }
    EXPECT_EQ(fingerprint(first), before);

    // A single job shows the plain percentage again.
    checkApplyToAll(CalculationJob::Fourier, false);
    button(CalculationJob::Fourier)->click();
    EXPECT_EQ(bar->format(), QStringLiteral("%p%"));
    ASSERT_TRUE(waitForJob());
    EXPECT_EQ(bar->format(), QStringLiteral("%p%"));
}

// A dataset removed while its job runs is marked nowhere: the flag goes by identity, not by row,
// and the dataset that moved into its row stays as it was.
TEST_F(MainWindowCalculations, RemovingTheDatasetOfARunningJob)
{
    makeWindow();
    const QString removedPath = writeChannels("removed.vqd", 2);
    const QByteArray before = fingerprint(removedPath);
    open({ removedPath, writeChannels("stays.vqd", 2) });
    {
        std::unique_lock<std::recursive_mutex> hold(hdf5Mutex());
        button(CalculationJob::Compensation)->click();
        ASSERT_TRUE(window->isCalculationRunning());
        window->removeDataset();
        ASSERT_EQ(window->datasets().size(), 1u);
        // The dataset now shown allows compensation, but the running job keeps its button off.
        EXPECT_EQ(dock()->dataset(), dataset(0));
        EXPECT_FALSE(button(CalculationJob::Compensation)->isEnabled());
    }
    ASSERT_TRUE(waitForJob());
    EXPECT_FALSE(dataset(0)->ctcApplied);
    EXPECT_FALSE(dataset(0)->reader->hasFeature("fl1_max_ctc"));
    EXPECT_TRUE(button(CalculationJob::Compensation)->isEnabled());
    EXPECT_EQ(fingerprint(removedPath), before);
}

TEST_F(MainWindowCalculations, ClearingTheSessionDuringARun)
{
    makeWindow();
    open({ writeChannels("a.vqd", 2, true), writeChannels("b.vqd", 2, true) });
    checkApplyToAll(CalculationJob::Fourier, true);
    {
        std::unique_lock<std::recursive_mutex> hold(hdf5Mutex());
        button(CalculationJob::Fourier)->click();
        ASSERT_TRUE(window->isCalculationRunning());
        window->clearSession();
        EXPECT_TRUE(window->datasets().empty());
    }
    ASSERT_TRUE(waitForJob());
    EXPECT_TRUE(window->datasets().empty());
    EXPECT_FALSE(button(CalculationJob::Fourier)->isEnabled());
    EXPECT_TRUE(dock()->progressBar()->isHidden());
}

// Closing and destroying the window while a job runs waits for the job's end, whose engine the
// window owns; the file is left as it was.
TEST_F(MainWindowCalculations, ClosingTheWindowDuringARun)
{
    makeWindow();
    const QString path = writeChannels("masks.vqd", 2, true);
    const QByteArray before = fingerprint(path);
    open({ path });
    {
        std::unique_lock<std::recursive_mutex> hold(hdf5Mutex());
        button(CalculationJob::Fourier)->click();
        ASSERT_TRUE(window->isCalculationRunning());
        window->close();
    }
    window.reset();
    EXPECT_EQ(fingerprint(path), before);
}

// A restored session keeps which calculations ran and with what; showing such a dataset rebuilds
// the features at once, and only when the kept channels are the dataset's.
TEST_F(MainWindowCalculations, RestoredCompensationIsRebuiltWhenShown)
{
    makeWindow();
    open({ writeChannels("a.vqd", 2), writeChannels("b.vqd", 2), writeChannels("c.vqd", 3) });
    const std::vector<std::vector<double>> kept = { { 1, 0.25 }, { 0, 1 } };
    for (int row : { 1, 2 }) {
        dataset(row)->ctcApplied = true;
        dataset(row)->ctcChannels = { 1, 2 };
        dataset(row)->spilloverMatrix = kept;
    }
    auto* table = dock()->findChild<SpilloverTable*>("spilloverTable");

    select(1);
    EXPECT_FALSE(window->isCalculationRunning());
    EXPECT_TRUE(dataset(1)->reader->isComputedFeature("fl1_max_ctc"));
    EXPECT_TRUE(dataset(1)->reader->isComputedFeature("fl2_max_ctc"));
    EXPECT_EQ(table->item(0, 1)->text(), "0.25");
    EXPECT_GE(window->findChild<QComboBox*>("xFeatureCombo")->findData(QStringLiteral("fl2_max_ctc")), 0);

    // Channels 1..3 aren't the kept 1 and 2: nothing is rebuilt, the table starts afresh.
    select(2);
    EXPECT_FALSE(dataset(2)->reader->hasFeature("fl1_max_ctc"));
    ASSERT_EQ(table->rowCount(), 3);
    EXPECT_EQ(table->item(0, 1)->text(), "0.0");
}

TEST_F(MainWindowCalculations, RestoredRefinementIsRebuiltWhenShown)
{
    makeWindow();
    FileContents contents { fluorescenceColumns(2), { { "fluorescence:sample rate", "1000000" } }, false,
        true };
    open({ writeChannels("a.vqd", 2), writeFile("traces.vqd", contents) });
    dataset(1)->flRefinementApplied = true;
    select(1);
    EXPECT_TRUE(dataset(1)->reader->isComputedFeature("fl1_max_rf"));
    EXPECT_FALSE(dataset(0)->reader->hasFeature("fl1_max_rf"));
}

// A dataset measured in the reservoir has no Young's modulus: its button is off and the job does
// nothing when asked all the same.
TEST_F(MainWindowCalculations, NoYoungsModulusInTheReservoir)
{
    makeWindow();
    open({ writeFile("reservoir.vqd", { fluorescenceColumns(1), { { "setup:chip region", "reservoir" } } }),
        writeFile("channel.vqd", { fluorescenceColumns(1), { { "setup:chip region", "channel" } } }),
        writeFile("noarea.vqd", { { { "deform", { 0.01, 0.02 } } }, {} }) });
    EXPECT_FALSE(button(CalculationJob::Emodulus)->isEnabled());
    window->onComputeEmodulus();
    EXPECT_FALSE(window->isCalculationRunning());
    select(1);
    EXPECT_TRUE(button(CalculationJob::Emodulus)->isEnabled());
    select(2);
    EXPECT_FALSE(button(CalculationJob::Emodulus)->isEnabled());
}

// Young's modulus of all datasets: each is computed with its own metadata, and where the chosen
// per-event temperature is missing the dataset falls back to the temperature of the control. Two
// datasets that differ only in that (events at 30 °C against the control's 26 °C, in water measured
// at 23 °C) must differ by the ratio of water's viscosity at the two temperatures, whatever the
// table says: 0.797275 / 0.870256 mPa·s = 0.916139, computed apart from the program; the metadata's
// 23 °C would give 0.855097. Datasets in the reservoir
// or without area are left out.
TEST_F(MainWindowCalculations, YoungsModulusOfAllFallsBackPerDataset)
{
    makeWindow();
    const QString table = folder.filePath("tables/LUT_LE_2D_FEM.txt");
    QDir().mkpath(folder.filePath("tables"));
    ASSERT_TRUE(ExampleData::writeDemoTable(table.toStdString()));
    window->emodulus()->setSearchFolders({ folder.filePath("tables") });

    Columns cells = { { "area_um", { 40, 60, 80, 100, 120, 150 } },
        { "deform", { 0.02, 0.025, 0.03, 0.03, 0.035, 0.04 } } };
    Columns withTemperature = cells;
    withTemperature.push_back({ "temp", std::vector<double>(eventCount, 30.0) });
    const std::map<std::string, std::string> water
        = { { "setup:medium", "water" }, { "setup:temperature", "23" }, { "setup:channel width", "20" },
              { "setup:flow rate", "0.04" }, { "imaging:pixel size", "0.34" } };
    std::map<std::string, std::string> reservoir = water;
    reservoir["setup:chip region"] = "reservoir";
    const QString eventPath = writeFile("event.vqd", { withTemperature, water });
    const QByteArray before = fingerprint(eventPath);
    open({ eventPath, writeFile("meta.vqd", { cells, water }),
        writeFile("reservoir.vqd", { cells, reservoir }),
        writeFile("noarea.vqd", { { { "deform", { 0.02, 0.03 } } }, water }) });

    dock()->findChild<QRadioButton*>("manualTemperatureRadio")->setChecked(true);
    dock()->findChild<QDoubleSpinBox*>("temperatureSpinBox")->setValue(26.0);
    dock()->findChild<QRadioButton*>("eventTemperatureRadio")->setChecked(true);
    checkApplyToAll(CalculationJob::Emodulus, true);
    ASSERT_TRUE(button(CalculationJob::Emodulus)->isEnabled());
    EXPECT_FALSE(dock()->assessQualityButton()->isEnabled());
    button(CalculationJob::Emodulus)->click();
    ASSERT_TRUE(waitForJob());

    EXPECT_TRUE(dataset(0)->emodApplied);
    EXPECT_TRUE(dataset(1)->emodApplied);
    EXPECT_FALSE(dataset(2)->emodApplied);
    EXPECT_FALSE(dataset(2)->reader->hasFeature("emodulus"));
    EXPECT_FALSE(dataset(3)->emodApplied);
    EXPECT_TRUE(dock()->assessQualityButton()->isEnabled());
    const std::vector<double>& atEventTemperature = dataset(0)->reader->getFeature("emodulus");
    const std::vector<double>& atControlTemperature = dataset(1)->reader->getFeature("emodulus");
    ASSERT_EQ(atEventTemperature.size(), eventCount);
    ASSERT_EQ(atControlTemperature.size(), eventCount);
    int compared = 0;
    for (std::size_t i = 0; i < eventCount; ++i) {
        if (std::isnan(atControlTemperature[i]))
            continue;
        EXPECT_NEAR(atEventTemperature[i] / atControlTemperature[i], 0.916139, 1e-5) << i;
        ++compared;
    }
    EXPECT_GE(compared, 4);
    EXPECT_GE(window->findChild<QComboBox*>("yFeatureCombo")->findData(QStringLiteral("emodulus")), 0);
    EXPECT_EQ(fingerprint(eventPath), before);
}

// A job that recomputes a plotted feature resets the zoom once; one that changes nothing plotted
// leaves the user's zoom alone.
TEST_F(MainWindowCalculations, RecomputingAPlottedFeatureResetsTheZoom)
{
    makeWindow();
    open({ writeChannels("a.vqd", 2) });
    auto* plot = window->findChild<ScatterPlot*>("scatterPlot");
    auto* x = window->findChild<QComboBox*>("xFeatureCombo");

    plot->setAxisScale(QwtPlot::xBottom, 0, 1);
    button(CalculationJob::Compensation)->click();
    ASSERT_TRUE(waitForJob());
    EXPECT_FALSE(plot->axisAutoScale(QwtPlot::xBottom));

    x->setCurrentIndex(x->findData(QStringLiteral("fl1_max_ctc")));
    plot->setAxisScale(QwtPlot::xBottom, 0, 1);
    button(CalculationJob::Compensation)->click();
    ASSERT_TRUE(waitForJob());
    EXPECT_TRUE(plot->axisAutoScale(QwtPlot::xBottom));

    // The question was for that one refresh only.
    plot->setAxisScale(QwtPlot::xBottom, 0, 1);
    window->onFilterChanged();
    EXPECT_FALSE(plot->axisAutoScale(QwtPlot::xBottom));
}
