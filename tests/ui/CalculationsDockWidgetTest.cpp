#include "ui/CalculationsDockWidget.h"

#include "core/DatasetEntry.h"
#include "io/VQDMetadata.h"
#include "ui/CalculationsTexts.h"
#include "ui/SpilloverTable.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

VQDMetadata metadataOf(const std::map<std::string, std::string>& setup,
    const std::map<std::string, std::string>& imaging = { { "pixel size", "0.34" } })
{
    VQDMetadata metadata;
    metadata.setup = setup;
    metadata.imaging = imaging;
    return metadata;
}

class CalculationsDock : public ::testing::Test
{
protected:
    template <typename T> T* child(const char* name)
    {
        T* widget = dock.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    QComboBox* viscosityCombo() { return child<QComboBox>("viscosityCombo"); }
    QDoubleSpinBox* viscositySpin() { return child<QDoubleSpinBox>("viscositySpinBox"); }
    QDoubleSpinBox* temperatureSpin() { return child<QDoubleSpinBox>("temperatureSpinBox"); }
    QRadioButton* radio(const char* name) { return child<QRadioButton>(name); }
    QString label(const char* name) { return child<QLabel>(name)->text(); }

    EModulus engine;
    CalculationsDockWidget dock { &engine };
};

} // namespace

// Each medium is offered the one viscosity law that fits it, and the displayed viscosity is that
// law's at the measurement's channel, flow and temperature; media without a law leave the value to
// the user. The expected viscosities were computed apart from the program from the published laws.
TEST_F(CalculationsDock, MediumDecidesTheViscosityModelOnOffer)
{
    struct Case
    {
        const char* medium;
        const char* width;
        const char* flow;
        const char* temperature;
        QString shown;
        QString model;
        int modelNumber;
        double viscosity; // NaN: entered by the user
    };
    const double entered = std::nan("");
    const Case cases[] = {
        { "Sorvex", "30", "0.16", "23", "Sorvex", "Herold-2017", 0, 5.587 },
        { "SorvexB", "20", "0.04", "23", "SorvexB", "Herold-2017", 0, 7.582 },
        { "SorvexB", "20", "0.04", "27.5", "SorvexB", "Herold-2017", 0, 6.495 },
        { "water", "20", "0.04", "25", "Water", "Kestin-1978", 1, 0.890 },
        { "Water", "20", "0.04", "20", "Water", "Kestin-1978", 1, 1.002 },
        { "0.83% MC-PBS", "20", "0.04", "23", "0.83% MC-PBS", "Manual", 3, entered },
        { "PBS", "20", "0.04", "23", "PBS (unknown)", "Manual", 3, entered },
        { "", "20", "0.04", "23", "— (unknown)", "Manual", 3, entered },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.medium + std::string(" at ") + c.temperature);
        // The user's last entry survives a medium that has no law.
        viscositySpin()->setValue(2.5);
        dock.setDatasetMetadata(metadataOf({ { "medium", c.medium }, { "channel width", c.width },
                                    { "flow rate", c.flow }, { "temperature", c.temperature } }),
            false);
        EXPECT_EQ(label("mediumLabel"), c.shown);
        ASSERT_EQ(viscosityCombo()->count(), 1);
        EXPECT_EQ(viscosityCombo()->currentText(), c.model);
        EXPECT_EQ(viscosityCombo()->currentData().toInt(), c.modelNumber);
        const bool manual = std::isnan(c.viscosity);
        EXPECT_EQ(viscositySpin()->isReadOnly(), !manual);
        EXPECT_EQ(viscositySpin()->buttonSymbols(),
            manual ? QAbstractSpinBox::UpDownArrows : QAbstractSpinBox::NoButtons);
        EXPECT_NEAR(viscositySpin()->value(), manual ? 2.5 : c.viscosity, 0.0011);
        EXPECT_EQ(dock.emodulusParams().viscosityModel, c.modelNumber);
    }
}

// Sizes show in general format with their unit when above 0; anything else shows "—", which the
// reading of the page takes as 0.
TEST_F(CalculationsDock, MetadataSizesShowWithUnitsOrDash)
{
    dock.setDatasetMetadata(
        metadataOf({ { "channel width", "20" }, { "flow rate", "0.06" } }, { { "pixel size", "0.34" } }),
        false);
    EXPECT_EQ(label("channelWidthLabel"), "20 µm");
    EXPECT_EQ(label("flowRateLabel"), "0.06 µL/s");
    EXPECT_EQ(label("pixelSizeLabel"), "0.34 µm");
    EModulusParams params = dock.emodulusParams();
    EXPECT_DOUBLE_EQ(params.channelWidth, 20.0);
    EXPECT_DOUBLE_EQ(params.flowRate, 0.06);
    EXPECT_DOUBLE_EQ(params.pixelSize, 0.34);

    dock.setDatasetMetadata(metadataOf({ { "channel width", "0" }, { "flow rate", "fast" } }, {}), false);
    EXPECT_EQ(label("channelWidthLabel"), "—");
    EXPECT_EQ(label("flowRateLabel"), "—");
    EXPECT_EQ(label("pixelSizeLabel"), "—");
    params = dock.emodulusParams();
    EXPECT_EQ(params.channelWidth, 0.0);
    EXPECT_EQ(params.flowRate, 0.0);
    EXPECT_EQ(params.pixelSize, 0.0);
    // Without a width or flow the viscosity is that of the instrument's usual 20 µm and 0.04 µL/s.
    EXPECT_NEAR(viscositySpin()->value(), 7.582, 0.0011);
}

// "Meta" shows the measurement's temperature and keeps it from being edited, "Manual" lets the user
// enter one, "Event" (only for datasets with a temperature per event) hides the value. A dataset
// without per-event temperatures takes "Event" away and falls back to "Meta".
TEST_F(CalculationsDock, TemperatureSourceDrivesTheTemperatureControl)
{
    dock.setDatasetMetadata(metadataOf({ { "medium", "water" }, { "temperature", "25" } }), true);
    EXPECT_TRUE(radio("metaTemperatureRadio")->isChecked());
    EXPECT_TRUE(radio("eventTemperatureRadio")->isEnabled());
    EXPECT_DOUBLE_EQ(temperatureSpin()->value(), 25.0);
    EXPECT_TRUE(temperatureSpin()->isReadOnly());
    EXPECT_EQ(dock.emodulusParams().temperatureSource, 2);

    radio("manualTemperatureRadio")->setChecked(true);
    EXPECT_FALSE(temperatureSpin()->isReadOnly());
    temperatureSpin()->setValue(30.5);
    EXPECT_NEAR(viscositySpin()->value(), 0.789, 0.0011);
    EModulusParams params = dock.emodulusParams();
    EXPECT_EQ(params.temperatureSource, 0);
    EXPECT_DOUBLE_EQ(params.temperature, 30.5);

    radio("eventTemperatureRadio")->setChecked(true);
    EXPECT_TRUE(temperatureSpin()->isHidden());
    EXPECT_EQ(dock.emodulusParams().temperatureSource, 1);

    // Back to "Meta": the measurement's value again, and its viscosity.
    radio("metaTemperatureRadio")->setChecked(true);
    EXPECT_FALSE(temperatureSpin()->isHidden());
    EXPECT_DOUBLE_EQ(temperatureSpin()->value(), 25.0);
    EXPECT_NEAR(viscositySpin()->value(), 0.890, 0.0011);

    radio("eventTemperatureRadio")->setChecked(true);
    dock.setDatasetMetadata(metadataOf({ { "medium", "water" } }), false);
    EXPECT_FALSE(radio("eventTemperatureRadio")->isEnabled());
    EXPECT_TRUE(radio("metaTemperatureRadio")->isChecked());
    EXPECT_FALSE(temperatureSpin()->isHidden());
    // No temperature in the metadata: 23 °C.
    EXPECT_DOUBLE_EQ(temperatureSpin()->value(), 23.0);
}

// In a batch each dataset is read from its own metadata; what the dock contributes is the choice
// of temperature source and the viscosity entered for media without a law.
TEST_F(CalculationsDock, BatchParametersComeFromEachDatasetsOwnMetadata)
{
    dock.setDatasetMetadata(metadataOf({ { "medium", "0.83% MC-PBS" }, { "temperature", "24" } }), true);
    viscositySpin()->setValue(4.2);

    struct Case
    {
        const char* name;
        std::map<std::string, std::string> setup;
        std::map<std::string, std::string> imaging;
        const char* source; // radio checked
        bool allowEvent;
        int medium, model, temperatureSource;
        double temperature, viscosity, width, flow, pixel;
    };
    const Case cases[] = {
        { "Sorvex with all values",
            { { "medium", "Sorvex" }, { "channel width", "30" }, { "flow rate", "0.16" },
                { "temperature", "26" } },
            { { "pixel size", "0.68" } }, "metaTemperatureRadio", true, 0, 0, 2, 26.0, 0.0, 30.0, 0.16,
            0.68 },
        { "SorvexB without sizes", { { "medium", "SorvexB" } }, {}, "metaTemperatureRadio", true, 1, 0, 2,
            23.0, 0.0, 20.0, 0.04, 0.34 },
        { "unreadable sizes", { { "medium", "water" }, { "channel width", "n/a" }, { "flow rate", "" } },
            { { "pixel size", "x" } }, "metaTemperatureRadio", true, 2, 1, 2, 23.0, 0.0, 20.0, 0.04, 0.34 },
        { "MC-PBS takes the entered viscosity", { { "medium", "MC-PBS 0.83%" } }, {}, "metaTemperatureRadio",
            true, 3, 3, 2, 23.0, 4.2, 20.0, 0.04, 0.34 },
        { "unknown medium", { { "medium", "Ficoll" } }, {}, "metaTemperatureRadio", true, 4, 3, 2, 23.0, 4.2,
            20.0, 0.04, 0.34 },
        { "event temperatures where the dataset has them", { { "medium", "water" } }, {},
            "eventTemperatureRadio", true, 2, 1, 1, 24.0, 0.0, 20.0, 0.04, 0.34 },
        { "a dataset without them falls back to the control",
            { { "medium", "water" }, { "temperature", "26" } }, {}, "eventTemperatureRadio", false, 2, 1, 0,
            24.0, 0.0, 20.0, 0.04, 0.34 },
        { "manual temperature", { { "medium", "water" }, { "temperature", "26" } }, {},
            "manualTemperatureRadio", true, 2, 1, 0, 24.0, 0.0, 20.0, 0.04, 0.34 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        radio(c.source)->setChecked(true);
        // The control holds the selected dataset's 24 °C whatever the source.
        temperatureSpin()->setValue(24.0);
        VQDMetadata metadata;
        metadata.setup = c.setup;
        metadata.imaging = c.imaging;
        const EModulusParams params = dock.emodulusParamsFor(metadata, c.allowEvent);
        EXPECT_EQ(params.medium, c.medium);
        EXPECT_EQ(params.viscosityModel, c.model);
        EXPECT_EQ(params.temperatureSource, c.temperatureSource);
        EXPECT_DOUBLE_EQ(params.temperature, c.temperature);
        EXPECT_DOUBLE_EQ(params.viscosity, c.viscosity);
        EXPECT_DOUBLE_EQ(params.channelWidth, c.width);
        EXPECT_DOUBLE_EQ(params.flowRate, c.flow);
        EXPECT_DOUBLE_EQ(params.pixelSize, c.pixel);
        EXPECT_EQ(params.deformFeature, "deform");
        EXPECT_TRUE(params.pixelationCorrection);
    }
}

// The deformation source is a choice only when offered and there is more than plain deformation;
// a Fourier deformation is looked up without the pixelation correction.
TEST_F(CalculationsDock, DeformationSourceChoice)
{
    auto* combo = child<QComboBox>("deformSourceCombo");
    dock.fillDeformationSources(false, true, true);
    EXPECT_TRUE(combo->isHidden());
    EXPECT_EQ(dock.emodulusParams().deformFeature, "deform");

    dock.fillDeformationSources(true, false, false);
    EXPECT_TRUE(combo->isHidden());

    dock.fillDeformationSources(true, true, true);
    EXPECT_FALSE(combo->isHidden());
    ASSERT_EQ(combo->count(), 3);
    EXPECT_EQ(combo->itemText(1), "Deformation from FC");
    EXPECT_EQ(combo->itemText(2), "Deformation of odd FC only");
    combo->setCurrentIndex(2);
    EModulusParams params = dock.emodulusParams();
    EXPECT_EQ(params.deformFeature, "deform_odd");
    EXPECT_FALSE(params.pixelationCorrection);

    // The choice survives a refill that still has it, and goes back to the first when it's gone.
    dock.fillDeformationSources(true, false, true);
    EXPECT_EQ(combo->currentData().toString(), "deform_odd");
    dock.fillDeformationSources(true, true, false);
    EXPECT_EQ(combo->currentData().toString(), "deform");
}

// Each filter row feeds its own fields: a row wired to its neighbour's fields would pass defaults.
TEST_F(CalculationsDock, RefinementSettingsComeFromTheirOwnRows)
{
    FLRefinementParams params = dock.fluorescenceParams();
    EXPECT_TRUE(params.hampel1 && params.hampel2 && params.savitzkyGolay);
    EXPECT_FALSE(params.median || params.rolling);
    EXPECT_EQ(params.hampel1HalfWindow, 5);
    EXPECT_EQ(params.hampel2HalfWindow, 11);
    EXPECT_EQ(params.savitzkyGolayHalfWindow, 3);
    EXPECT_DOUBLE_EQ(params.flMaxThreshold, 400.0);
    EXPECT_EQ(child<QSpinBox>("traceFilterWindow4")->maximum(), 20);

    const int windows[] = { 7, 13, 17, 19, 9 };
    for (int i = 0; i < 5; ++i) {
        child<QSpinBox>(QStringLiteral("traceFilterWindow%1").arg(i).toLatin1().constData())
            ->setValue(windows[i]);
        auto* box = child<QCheckBox>(QStringLiteral("traceFilter%1").arg(i).toLatin1().constData());
        box->setChecked(!box->isChecked());
    }
    child<QDoubleSpinBox>("flMaxThreshold")->setValue(1250.0);
    params = dock.fluorescenceParams();
    EXPECT_EQ(params.hampel1HalfWindow, 7);
    EXPECT_EQ(params.hampel2HalfWindow, 13);
    EXPECT_EQ(params.medianHalfWindow, 17);
    EXPECT_EQ(params.rollingHalfWindow, 19);
    EXPECT_EQ(params.savitzkyGolayHalfWindow, 9);
    EXPECT_FALSE(params.hampel1 || params.hampel2 || params.savitzkyGolay);
    EXPECT_TRUE(params.median && params.rolling);
    EXPECT_FLOAT_EQ(params.hampel1Threshold, 3.0f);
    EXPECT_DOUBLE_EQ(params.flMaxThreshold, 1250.0);
}

// The matrix as the user enters it: diagonal fixed at 1, anything unreadable off it counts as 0;
// a kept matrix comes back with 6 significant digits.
TEST_F(CalculationsDock, SpilloverTableReadsAndWritesTheMatrix)
{
    auto* table = child<SpilloverTable>("spilloverTable");
    dock.setCompensationChannels({ 1, 3, 4 });
    ASSERT_EQ(table->rowCount(), 3);
    EXPECT_EQ(table->horizontalHeaderItem(1)->text(), "FL-3");
    EXPECT_EQ(table->verticalHeaderItem(2)->text(), "FL-4");
    EXPECT_EQ(table->item(1, 1)->text(), "1.0");
    EXPECT_FALSE(table->item(1, 1)->flags() & Qt::ItemIsEditable);
    EXPECT_EQ(table->item(1, 1)->background().color(), QColor(230, 230, 230));
    EXPECT_EQ(table->item(0, 2)->text(), "0.0");
    EXPECT_TRUE(table->item(0, 2)->flags() & Qt::ItemIsEditable);
    EXPECT_EQ(table->item(0, 2)->textAlignment(), int(Qt::AlignCenter));

    table->item(0, 1)->setText("0.12");
    table->item(2, 0)->setText("abc");
    table->item(1, 2)->setText(" 1e-2 ");
    table->item(1, 1)->setText("7");
    const std::vector<std::vector<double>> expected = { { 1, 0.12, 0 }, { 0, 1, 0.01 }, { 0, 0, 1 } };
    EXPECT_EQ(dock.spilloverMatrix(), expected);

    dock.setSpilloverMatrix({ { 1, 0.123456789, 0 }, { 0.5, 1, 0 }, { 0, 2e-7, 1 } });
    EXPECT_EQ(table->item(0, 1)->text(), "0.123457");
    EXPECT_EQ(table->item(1, 0)->text(), "0.5");
    EXPECT_EQ(table->item(2, 1)->text(), "2e-07");
    // A matrix of another size is no matrix for these channels.
    dock.setSpilloverMatrix({ { 1, 0.9 }, { 0.9, 1 } });
    EXPECT_EQ(table->item(0, 1)->text(), "0.123457");

    // The same channels again keep what the user entered; others rebuild the table.
    dock.setCompensationChannels({ 1, 3, 4 });
    EXPECT_EQ(table->item(0, 1)->text(), "0.123457");
    dock.setCompensationChannels({ 1, 2 });
    EXPECT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->item(0, 1)->text(), "0.0");
}

// Start buttons follow what the dataset at hand allows, never while their own job runs, and none
// without a dataset.
TEST_F(CalculationsDock, StartButtonsFollowTheDatasetAndTheRunningJob)
{
    const CalculationJob jobs[] = { CalculationJob::Emodulus, CalculationJob::Compensation,
        CalculationJob::Refinement, CalculationJob::Fourier };
    for (CalculationJob job : jobs)
        EXPECT_FALSE(dock.startButton(job)->isEnabled());
    EXPECT_TRUE(dock.progressBar()->isHidden());

    DatasetEntry entry;
    dock.setDataset(&entry);
    dock.setEmodulusAvailable(true, false);
    dock.setCompensationChannels({ 1 });
    dock.setRefinementAvailable(true);
    dock.setFourierAvailable(false);
    EXPECT_TRUE(dock.startButton(CalculationJob::Emodulus)->isEnabled());
    EXPECT_FALSE(dock.startButton(CalculationJob::Compensation)->isEnabled());
    EXPECT_TRUE(dock.startButton(CalculationJob::Refinement)->isEnabled());
    EXPECT_FALSE(dock.startButton(CalculationJob::Fourier)->isEnabled());
    EXPECT_FALSE(dock.assessQualityButton()->isEnabled());

    dock.setCompensationChannels({ 1, 2 });
    dock.setEmodulusAvailable(true, true);
    EXPECT_TRUE(dock.startButton(CalculationJob::Compensation)->isEnabled());
    EXPECT_TRUE(dock.assessQualityButton()->isEnabled());

    // A running job keeps its button off when another dataset is shown meanwhile.
    dock.setJobRunning(CalculationJob::Emodulus, true);
    dock.setEmodulusAvailable(true, true);
    EXPECT_FALSE(dock.startButton(CalculationJob::Emodulus)->isEnabled());
    EXPECT_FALSE(dock.assessQualityButton()->isEnabled());
    EXPECT_TRUE(dock.startButton(CalculationJob::Refinement)->isEnabled());
    dock.setJobRunning(CalculationJob::Emodulus, false);
    EXPECT_TRUE(dock.startButton(CalculationJob::Emodulus)->isEnabled());

    dock.setDataset(nullptr);
    for (CalculationJob job : jobs)
        EXPECT_FALSE(dock.startButton(job)->isEnabled());
    EXPECT_FALSE(dock.assessQualityButton()->isEnabled());
}

TEST_F(CalculationsDock, ButtonsAndTheTraceToggleSignal)
{
    DatasetEntry entry;
    dock.setDataset(&entry);
    dock.setEmodulusAvailable(true, true);
    dock.setCompensationChannels({ 1, 2 });
    dock.setRefinementAvailable(true);
    dock.setFourierAvailable(true);
    QSignalSpy emodulus(&dock, &CalculationsDockWidget::computeEmodulus);
    QSignalSpy compensation(&dock, &CalculationsDockWidget::compensateCrosstalk);
    QSignalSpy refinement(&dock, &CalculationsDockWidget::refineFluorescence);
    QSignalSpy fourier(&dock, &CalculationsDockWidget::computeFourierDeform);
    QSignalSpy assess(&dock, &CalculationsDockWidget::assessEmodQuality);
    QSignalSpy traces(&dock, &CalculationsDockWidget::traceDisplayChanged);
    dock.startButton(CalculationJob::Emodulus)->click();
    dock.startButton(CalculationJob::Compensation)->click();
    dock.startButton(CalculationJob::Compensation)->click();
    dock.startButton(CalculationJob::Fourier)->click();
    dock.assessQualityButton()->click();
    child<QCheckBox>("showRefinedTrace")->setChecked(false);
    EXPECT_EQ(emodulus.count(), 1);
    EXPECT_EQ(compensation.count(), 2);
    EXPECT_EQ(refinement.count(), 0);
    EXPECT_EQ(fourier.count(), 1);
    EXPECT_EQ(assess.count(), 1);
    EXPECT_EQ(traces.count(), 1);
    EXPECT_FALSE(dock.showRefinedTrace());
}
