#include "DemoLookupTable.h"
#include "calc/EModulusLut.h"
#include "calc/LookupTableCheck.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;
using namespace Tessaly::ExampleData;

TEST(DemoTable, LawPutsTheUsualCellsIntoTheUsualDeformations)
{
    // At 0.04 µL/s in a 20 µm channel of 1 mPa·s: 0.5 to 5 kPa at 20 to 250 µm² lie between
    // deformation 0.005 and 0.1. By hand: stress scale 5 Pa, size terms 1.2523 and 1.8921.
    EXPECT_NEAR(demoDeformation(20.0, 5.0, 1.0, 0.04, 20.0), 4.5 * 0.001 * 1.2523132, 1e-8);
    EXPECT_NEAR(demoDeformation(250.0, 0.5, 1.0, 0.04, 20.0), 4.5 * 0.01 * 1.8920620, 1e-8);
    for (const double area : { 20.0, 100.0, 250.0 })
        for (const double modulus : { 0.5, 1.0, 5.0 }) {
            const double d = demoDeformation(area, modulus, 1.0, 0.04, 20.0);
            EXPECT_GT(d, 0.005);
            EXPECT_LT(d, 0.1);
            EXPECT_NEAR(demoModulus(area, d, 1.0, 0.04, 20.0), modulus, 1e-12);
        }
    EXPECT_TRUE(std::isnan(demoModulus(50.0, 0.0, 1.0, 0.04, 20.0)));
    EXPECT_TRUE(std::isnan(demoModulus(50.0, -0.01, 1.0, 0.04, 20.0)));
}

TEST(DemoTable, ToolWritesAValidTableThatSaysWhatItIs)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("tables/LUT_LE_2D_FEM.txt"));
    QDir().mkpath(folder.filePath(QStringLiteral("tables")));
    QProcess tool;
    tool.start(QStringLiteral(TESSALY_EXAMPLE_TOOL), { QStringLiteral("--write-demo-table"), path });
    ASSERT_TRUE(tool.waitForFinished(60000));
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    EXPECT_EQ(lookupTableProblem(path), QString());

    EModulusLut lut;
    ASSERT_TRUE(readEModulusLut(path, lut));
    EXPECT_EQ(lut.area.size(), 90u * 60u);
    EXPECT_EQ(lut.channelWidth, 20.0);
    EXPECT_EQ(lut.flowRate, 0.04);
    EXPECT_EQ(lut.viscosity, 1.0);
    EXPECT_TRUE(
        lut.metadataText.contains(QStringLiteral("demonstration table, not a finite-element result")));
    for (std::size_t i = 0; i < lut.area.size(); i += 97)
        EXPECT_NEAR(lut.deform[i], demoDeformation(lut.area[i], lut.emodulus[i], 1.0, 0.04, 20.0),
            1e-9 * lut.deform[i]);

    // An unwritable place fails without leaving anything behind.
    QProcess refused;
    refused.start(QStringLiteral(TESSALY_EXAMPLE_TOOL),
        { QStringLiteral("--write-demo-table"),
            folder.filePath(QStringLiteral("missing/LUT_LE_2D_FEM.txt")) });
    ASSERT_TRUE(refused.waitForFinished(60000));
    EXPECT_NE(refused.exitCode(), 0);
    EXPECT_FALSE(QDir(folder.filePath(QStringLiteral("missing"))).exists());
}
