#include "ui/ExportDialog.h"

#include "core/DatasetEntry.h"
#include "support/FixtureWriter.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;

namespace {

// Dataset A: deform and area_um, with images. Dataset B: deform and fl1_max, with masks and traces.
class ExportDialogTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        H5::Exception::dontPrint();
        const std::string pathA = folder.filePath(QStringLiteral("a.vqd")).toStdString();
        FixtureWriter(pathA)
            .column<double>("deform", { 0.1, 0.2 })
            .column<double>("area_um", { 50, 60 })
            .imageStack("image", 2, 2, 2, std::vector<std::uint8_t>(8, 1))
            .stringAttribute("setup:module composition", "Vortiq")
            .close();
        const std::string pathB = folder.filePath(QStringLiteral("b.vqd")).toStdString();
        FixtureWriter(pathB)
            .column<double>("deform", { 0.1 })
            .column<double>("fl1_max", { 3 })
            .imageStack("mask", 1, 2, 2, std::vector<std::uint8_t>(4, 1))
            .trace<float>("fl1_raw", { { 1, 2 } })
            .close();
        for (auto [entry, path] : { std::pair { &a, pathA }, std::pair { &b, pathB } }) {
            entry->reader = std::make_shared<VQDReader>();
            ASSERT_TRUE(entry->reader->open(path));
            entry->featuresLoaded = true;
        }
    }

    template <typename Button> static Button* button(QWidget& dialog, const QString& text)
    {
        for (Button* candidate : dialog.findChildren<Button*>())
            if (textOf(candidate) == text)
                return candidate;
        ADD_FAILURE() << "no control " << text.toStdString();
        return nullptr;
    }

    static QString textOf(const QAbstractButton* button) { return button->text(); }
    static QString textOf(const QGroupBox* group) { return group->title(); }

    QTemporaryDir folder;
    DatasetEntry a;
    DatasetEntry b;
    std::vector<DatasetEntry*> both { &a, &b };
};

} // namespace

TEST_F(ExportDialogTest, FeaturesAreTheUnionWithThoseOfOtherDatasetsOnlyInScopeAll)
{
    ExportDialog dialog(&a, both, false);
    QCheckBox* deform = dialog.featureCheckBox("deform");
    QCheckBox* area = dialog.featureCheckBox("area_um");
    QCheckBox* fluorescence = dialog.featureCheckBox("fl1_max");
    ASSERT_TRUE(deform && area && fluorescence);
    EXPECT_EQ(dialog.featureCheckBox("image"), nullptr);
    EXPECT_EQ(dialog.featureCheckBox("mask"), nullptr);
    EXPECT_EQ(deform->text(), "Deformation  [deform]");
    EXPECT_TRUE(deform->isChecked());
    EXPECT_FALSE(fluorescence->isChecked());
    EXPECT_FALSE(fluorescence->isVisibleTo(&dialog));

    button<QRadioButton>(dialog, "All datasets (2)")->setChecked(true);
    EXPECT_TRUE(fluorescence->isVisibleTo(&dialog));
    EXPECT_EQ(fluorescence->toolTip(), "Not available in current dataset (available in other datasets)");
    EXPECT_TRUE(deform->toolTip().isEmpty());

    // Select All reaches the boxes in sight only.
    button<QRadioButton>(dialog, "Current dataset only")->setChecked(true);
    button<QPushButton>(dialog, "Deselect All")->click();
    button<QPushButton>(dialog, "Select All")->click();
    EXPECT_EQ(dialog.config().features, QStringList({ "area_um", "deform" }));

    ExportDialog alone(&a, { &a }, false);
    EXPECT_FALSE(button<QRadioButton>(alone, "All datasets (1)")->isEnabled());
}

TEST_F(ExportDialogTest, EachFormatAllowsOnlyTheDataItCanHold)
{
    ExportDialog dialog(&a, both, false);
    QCheckBox* images = button<QCheckBox>(dialog, "Images");
    QCheckBox* masks = button<QCheckBox>(dialog, "Masks");
    QCheckBox* traces = button<QCheckBox>(dialog, "Traces");
    auto* aviOptions = button<QGroupBox>(dialog, "AVI Options");
    const QString otherTip = "Not available in current dataset (available in other datasets)";

    struct State
    {
        bool enabled;
        bool checked;
        QString toolTip;
    };
    auto stateOf = [](QCheckBox* box) {
        return State { box->isEnabled(), box->isChecked(), box->toolTip() };
    };
    auto expectState = [&stateOf](QCheckBox* box, const State& expected, const char* when) {
        const State actual = stateOf(box);
        EXPECT_EQ(actual.enabled, expected.enabled) << box->text().toStdString() << " " << when;
        EXPECT_EQ(actual.checked, expected.checked) << box->text().toStdString() << " " << when;
        EXPECT_EQ(actual.toolTip, expected.toolTip) << box->text().toStdString() << " " << when;
    };

    // A measurement file of the current dataset: only what it has.
    images->click();
    expectState(images, { true, true, "" }, "vqd, current");
    expectState(masks, { false, false, "" }, "vqd, current");
    expectState(traces, { false, false, "" }, "vqd, current");
    EXPECT_FALSE(aviOptions->isVisibleTo(&dialog));

    // All datasets: what any of them has, marked when the current one lacks it.
    button<QRadioButton>(dialog, "All datasets (2)")->setChecked(true);
    masks->click();
    expectState(masks, { true, true, otherTip }, "vqd, all");
    expectState(traces, { true, false, otherTip }, "vqd, all");

    button<QRadioButton>(dialog, ".tsv (Tab-separated)")->setChecked(true);
    for (QCheckBox* box : { images, masks, traces })
        expectState(box, { false, false, "Not available in TSV format" }, "tsv");
    EXPECT_TRUE(dialog.featureCheckBox("deform")->isEnabled());

    button<QRadioButton>(dialog, ".avi (Video)")->setChecked(true);
    expectState(images, { false, true, "Images are always included in AVI export" }, "avi");
    expectState(masks, { false, false, "Only images are exported in AVI format" }, "avi");
    expectState(traces, { false, false, "Only images are exported in AVI format" }, "avi");
    EXPECT_FALSE(dialog.featureCheckBox("deform")->isEnabled());
    EXPECT_TRUE(aviOptions->isVisibleTo(&dialog));
    // Without expert mode there is no reanalysis option.
    EXPECT_FALSE(button<QCheckBox>(dialog, "For reanalysis (prepend 100 frames of the average image)")
                     ->isVisibleTo(&dialog));

    // Back to a measurement file, the user's own choices come back.
    button<QRadioButton>(dialog, ".vqd (HDF5)")->setChecked(true);
    expectState(images, { true, true, "" }, "vqd again");
    expectState(masks, { true, true, otherTip }, "vqd again");
}

TEST_F(ExportDialogTest, TheLastConfigurationIsRestored)
{
    ExportConfig last;
    last.features = QStringList { "area_um" };
    last.tsv = true;
    last.mjpeg = false;
    last.skipDuplicates = true;
    last.reanalysis = true; // not offered without expert mode
    last.customDirectory = true;
    last.directory = QStringLiteral("/tmp/out");
    last.allDatasets = true;
    ExportDialog dialog(&a, both, false, nullptr, &last);
    const ExportConfig config = dialog.config();
    EXPECT_EQ(config.features, QStringList({ "area_um" }));
    EXPECT_TRUE(config.tsv);
    EXPECT_FALSE(config.avi);
    EXPECT_FALSE(config.mjpeg);
    EXPECT_TRUE(config.skipDuplicates);
    EXPECT_FALSE(config.reanalysis);
    EXPECT_TRUE(config.customDirectory);
    EXPECT_EQ(config.directory, "/tmp/out");
    EXPECT_TRUE(config.allDatasets);

    // Scope "all" can't be restored with a single dataset.
    ExportDialog alone(&a, { &a }, false, nullptr, &last);
    EXPECT_FALSE(alone.config().allDatasets);
}
