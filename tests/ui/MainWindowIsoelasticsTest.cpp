#include "DemoLookupTable.h"
#include "MainWindowFixture.h"
#include "calc/EModulus.h"
#include "plot/ScatterPlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/LookupTablePanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

namespace {

void choose(QComboBox* combo, const QString& key)
{
    const int index = combo->findData(key);
    ASSERT_GE(index, 0) << key.toStdString();
    combo->setCurrentIndex(index);
}

} // namespace

class MainWindowIsoelastics : public MainWindowFixture
{
protected:
    // A window showing an example dataset, its engine looking for tables in the test folder only.
    void showDataset(bool withTable)
    {
        const QString tables = folder.filePath(QStringLiteral("tables"));
        QDir().mkpath(tables);
        if (withTable) {
            ASSERT_TRUE(
                ExampleData::writeDemoTable((tables + QStringLiteral("/LUT_LE_2D_FEM.txt")).toStdString()));
        }
        testing::internal::CaptureStderr();
        MainWindow& w = makeWindow();
        w.emodulus()->setSearchFolders({ tables, folder.filePath(QStringLiteral("user")) });
        w.openDataset(writeDataset(QStringLiteral("cells.vqd"), QStringLiteral("Cells"), 400));
        ASSERT_TRUE(waitUntilIdle());
        testing::internal::GetCapturedStderr();
    }

    QCheckBox* box(const char* name) { return window->findChild<QCheckBox*>(name); }
    QComboBox* combo(const char* name) { return window->findChild<QComboBox*>(name); }
    ScatterPlot* plot() { return window->findChild<ScatterPlot*>(QStringLiteral("scatterPlot")); }
};

TEST_F(MainWindowIsoelastics, LinesFollowTheBoxesAndTheAxes)
{
    showDataset(true);
    QCheckBox* lines = box("isoelasticsCheckBox");
    QCheckBox* labels = box("isoelasticLabelsCheckBox");
    ASSERT_TRUE(lines && labels);
    // Area against deformation is the default pair: the box is offered, its labels box only when on.
    EXPECT_TRUE(lines->isVisibleTo(window.get()));
    EXPECT_FALSE(labels->isVisibleTo(window.get()));
    EXPECT_TRUE(plot()->isoelasticLines().empty());

    lines->setChecked(true);
    EXPECT_TRUE(labels->isVisibleTo(window.get()));
    ASSERT_EQ(plot()->isoelasticLines().size(), 11u);
    EXPECT_TRUE(plot()->isoelasticLabels().empty());
    const QPointF first = plot()->isoelasticLines()[0]->sample(0);
    // Area on x, from the table's smallest area; deformation on y.
    EXPECT_NEAR(first.x(), 5.0, 1e-9);
    EXPECT_GT(first.y(), 0.0);
    EXPECT_LT(first.y(), 1.0);

    // The example files are of SorvexB at 23 °C, 0.06 µL/s in 20 µm: the lowest line's modulus is
    // 0.2 kPa times the flow and viscosity ratios to the table's.
    labels->setChecked(true);
    ASSERT_EQ(plot()->isoelasticLabels().size(), 11u);
    const double factor = 0.06 / 0.04
        * EModulus::viscosity(
            window->calcDock()->emodulusParamsFor(window->datasets()[0]->metadata, false), 23.0);
    const QString expected
        = QString::number(0.2 * factor, 'f', 0.2 * factor < 1.0 ? 2 : 1) + QStringLiteral(" kPa");
    EXPECT_EQ(plot()->isoelasticLabels()[0]->label().text(), expected);

    // Deformation on x: every point is mirrored.
    choose(combo("xFeatureCombo"), QStringLiteral("deform"));
    choose(combo("yFeatureCombo"), QStringLiteral("area_um"));
    ASSERT_EQ(plot()->isoelasticLines().size(), 11u);
    EXPECT_EQ(plot()->isoelasticLines()[0]->sample(0), QPointF(first.y(), first.x()));

    // Any other pair hides the boxes and the lines.
    choose(combo("yFeatureCombo"), QStringLiteral("size_x"));
    EXPECT_FALSE(lines->isVisibleTo(window.get()));
    EXPECT_FALSE(labels->isVisibleTo(window.get()));
    EXPECT_TRUE(plot()->isoelasticLines().empty());
    EXPECT_TRUE(plot()->isoelasticLabels().empty());
}

TEST_F(MainWindowIsoelastics, WithoutTableNoLinesUntilOneIsChosen)
{
    showDataset(false);
    box("isoelasticsCheckBox")->setChecked(true);
    EXPECT_TRUE(plot()->isoelasticLines().empty());

    LookupTablePanel* panel = window->calcDock()->lookupTablePanel();
    panel->refresh();
    EXPECT_TRUE(panel->chooseOffered());
    const QString demo = folder.filePath(QStringLiteral("demo.txt"));
    ASSERT_TRUE(ExampleData::writeDemoTable(demo.toStdString()));
    ASSERT_TRUE(panel->installTable(demo));
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(plot()->isoelasticLines().size(), 11u);
}
