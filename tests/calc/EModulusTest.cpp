#include "calc/EModulus.h"

#include "DemoLookupTable.h"
#include "ExampleEvents.h"
#include "ExampleFileWriter.h"
#include "calc/Viscosity.h"
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <H5Cpp.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;
using namespace Tessaly::Testing;
namespace Example = Tessaly::ExampleData;

namespace {

double linearModulus(double area, double deform)
{
    return 1.0 + 0.02 * area + 30.0 * deform;
}

// A table of modulus 1 + 0.02 area + 30 deform on a grid over area 10..110 µm² and deformation
// 0.01..0.11: linear interpolation gives it exactly, so any difference is the rescaling's.
QByteArray linearTable(const QByteArray& metadata = {})
{
    QByteArray text = metadata + "area_um deform emodulus\n";
    for (int i = 0; i <= 10; ++i)
        for (int j = 0; j <= 10; ++j) {
            const double a = 10.0 + 10.0 * i, d = 0.01 + 0.01 * j;
            text += QByteArray::number(a, 'g', 17) + ' ' + QByteArray::number(d, 'g', 17) + ' '
                + QByteArray::number(linearModulus(a, d), 'g', 17) + '\n';
        }
    return text;
}

class EModulusEngine : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { H5::Exception::dontPrint(); }

    void SetUp() override
    {
        for (const char* name : { "install", "user" })
            QDir(folder.path()).mkpath(QString::fromLatin1(name));
        engine.setSearchFolders(
            { folder.filePath(QStringLiteral("install")), folder.filePath(QStringLiteral("user")) });
    }

    void putTable(const QByteArray& text, const char* where = "install")
    {
        QFile file(folder.filePath(QString::fromLatin1(where) + QLatin1Char('/') + EModulus::lutFileName));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    // A measurement file of the given columns, opened.
    void openReader(const std::vector<std::pair<std::string, std::vector<double>>>& columns)
    {
        const std::string path = folder.filePath(QStringLiteral("m%1.vqd").arg(fileCount++)).toStdString();
        {
            FixtureWriter writer(path);
            for (const auto& [name, values] : columns)
                writer.column<double>(name, values);
        }
        ASSERT_TRUE(reader.open(path));
    }

    QTemporaryDir folder;
    EModulus engine;
    VQDReader reader;
    int fileCount = 0;
};

} // namespace

TEST_F(EModulusEngine, TableIsSoughtUntilFoundAndTheFirstFolderWins)
{
    testing::internal::CaptureStderr();
    EXPECT_TRUE(engine.isoelastics(EModulusParams()).empty());
    const std::string message = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        message.find("EModulus: LUT file not found: LUT_LE_2D_FEM.txt (searched from "), std::string::npos);
    EXPECT_EQ(engine.lut(0), nullptr);

    // Put in place later, the user's table is picked up; the installation's would come first.
    putTable(linearTable("# BEGIN METADATA\n# {\"channel_width\": 40}\n# END METADATA\n"), "user");
    putTable(linearTable(), "install");
    EXPECT_EQ(engine.findLutFile(), folder.filePath(QStringLiteral("install/LUT_LE_2D_FEM.txt")));
    engine.triangulate(0);
    ASSERT_NE(engine.lut(0), nullptr);
    EXPECT_EQ(engine.lut(0)->channelWidth, 20.0);
    ASSERT_NE(engine.mesh(0), nullptr);
    const EModulusMesh* mesh = engine.mesh(0);

    // Once read, a table is kept: replacing the file changes nothing for this run.
    QFile::remove(folder.filePath(QStringLiteral("install/LUT_LE_2D_FEM.txt")));
    engine.triangulate(0);
    EXPECT_EQ(engine.mesh(0), mesh);
    EXPECT_EQ(engine.lut(0)->channelWidth, 20.0);
    // Other table numbers name no file.
    engine.loadLut(3);
    EXPECT_EQ(engine.lut(3), nullptr);
}

TEST_F(EModulusEngine, TableOfTooFewRowsStaysWithoutMesh)
{
    putTable("area deform emodulus\n10 0.01 1\n20 0.02 2\n");
    openReader({ { "area_um", { 15.0 } }, { "deform", { 0.015 } } });
    testing::internal::CaptureStderr();
    EXPECT_FALSE(engine.compute(&reader, EModulusParams()));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("EModulus: failed to build LUT triangulation"),
        std::string::npos);
    ASSERT_NE(engine.lut(0), nullptr);
    EXPECT_EQ(engine.mesh(0), nullptr);
    EXPECT_FALSE(reader.hasFeature("emodulus"));
}

TEST_F(EModulusEngine, ComputeRescalesToTheTablesConditions)
{
    putTable(linearTable());
    // Table at 20 µm, 0.16 µL/s, 1.002 mPa·s; measured in 25 µm at 0.04 µL/s in twice as viscous a
    // medium: areas shrink by 0.8², moduli scale by 0.8³ * 0.25 * 2.
    EModulusParams params;
    params.channelWidth = 25.0;
    params.flowRate = 0.04;
    params.viscosityModel = ViscosityManual;
    params.viscosity = 2.004;
    params.pixelSize = 0.5;
    const std::vector<double> area { 50.0, 100.0, 150.0, 20.0, 100.0, 1000.0 };
    std::vector<double> deform { 0.05, 0.08, 0.03, 0.1, 0.0, 0.05 };
    // Just above the table's lowest deformation when raw, just below it when corrected.
    deform[4] = 0.01 + 0.5 * pixelationCorrection(100.0, 0.5);
    openReader({ { "area_um", area }, { "deform", deform } });
    ASSERT_TRUE(engine.compute(&reader, params));
    const std::vector<double>& result = reader.getFeature("emodulus");
    ASSERT_EQ(result.size(), area.size());
    for (std::size_t i = 0; i < 4; ++i) {
        const double expected
            = 2.0 * 0.128 * linearModulus(area[i] * 0.64, deform[i] - pixelationCorrection(area[i], 0.5));
        EXPECT_NEAR(result[i], expected, 1e-9 * expected) << i;
    }
    EXPECT_TRUE(std::isnan(result[4])) << "corrected below the table";
    EXPECT_TRUE(std::isnan(result[5])) << "area beyond the table";
}

TEST_F(EModulusEngine, FourierDeformationWithoutCorrectionIsLookedUpRaw)
{
    putTable(linearTable());
    EModulusParams params;
    params.flowRate = 0.16;
    params.viscosityModel = ViscosityManual;
    params.viscosity = 1.002;
    params.deformFeature = "deform_fc";
    params.pixelationCorrection = false;
    openReader(
        { { "area_um", { 40.0, 60.0 } }, { "deform", { 0.5, 0.5 } }, { "deform_fc", { 0.02, 0.011 } } });
    ASSERT_TRUE(engine.compute(&reader, params));
    const std::vector<double>& result = reader.getFeature("emodulus");
    EXPECT_NEAR(result[0], linearModulus(40.0, 0.02), 1e-9);
    EXPECT_NEAR(result[1], linearModulus(60.0, 0.011), 1e-9);
}

TEST_F(EModulusEngine, TemperaturePerEventOnlyFromAFittingColumn)
{
    putTable(linearTable());
    EModulusParams params;
    params.flowRate = 0.16;
    params.viscosityModel = ViscosityKestin1978;
    params.medium = MediumWater;
    params.temperature = 20.0; // water: 1.002 mPa·s, the table's own viscosity
    params.temperatureSource = TemperatureEvent;
    params.pixelationCorrection = false;
    const std::vector<double> area { 40.0, 60.0, 80.0 };
    const std::vector<double> deform { 0.02, 0.03, 0.04 };
    const double kestin37 = 0.6912643450925647 / 1.002;
    struct Case
    {
        const char* what;
        std::vector<std::pair<std::string, std::vector<double>>> columns;
        std::vector<double> factor;
    };
    const std::vector<Case> cases {
        { "per event", { { "area_um", area }, { "deform", deform }, { "temp", { 20.0, 37.0, 20.0 } } },
            { 1.0, kestin37, 1.0 } },
        { "no temp", { { "area_um", area }, { "deform", deform } }, { 1.0, 1.0, 1.0 } },
        { "temp of another length", { { "area_um", area }, { "deform", deform }, { "temp", { 37.0, 37.0 } } },
            { 1.0, 1.0, 1.0 } },
    };
    for (const Case& c : cases) {
        openReader(c.columns);
        ASSERT_TRUE(engine.compute(&reader, params)) << c.what;
        const std::vector<double>& result = reader.getFeature("emodulus");
        for (std::size_t i = 0; i < area.size(); ++i)
            EXPECT_NEAR(result[i], c.factor[i] * linearModulus(area[i], deform[i]), 1e-9)
                << c.what << " " << i;
    }
}

TEST_F(EModulusEngine, RefusesWithoutEventsOrFeatures)
{
    putTable(linearTable());
    struct Case
    {
        const char* what;
        std::vector<std::pair<std::string, std::vector<double>>> columns;
    };
    const std::vector<Case> cases {
        { "0 events", { { "area_um", {} }, { "deform", {} } } },
        { "no area", { { "deform", { 0.02 } } } },
        { "no deformation", { { "area_um", { 50.0 } } } },
        { "lengths differ", { { "area_um", { 50.0, 60.0 } }, { "deform", { 0.02 } } } },
    };
    for (const Case& c : cases) {
        openReader(c.columns);
        EXPECT_FALSE(engine.compute(&reader, EModulusParams())) << c.what;
        EXPECT_FALSE(reader.hasFeature("emodulus")) << c.what;
    }
    EXPECT_FALSE(engine.compute(nullptr, EModulusParams()));
}

TEST_F(EModulusEngine, ProgressEvery256EventsEndingAt100)
{
    putTable(linearTable());
    std::vector<int> progress;
    QObject::connect(
        &engine, &EModulus::progressChanged, [&progress](int percent) { progress.push_back(percent); });
    openReader(
        { { "area_um", std::vector<double>(1000, 50.0) }, { "deform", std::vector<double>(1000, 0.05) } });
    ASSERT_TRUE(engine.compute(&reader, EModulusParams()));
    EXPECT_EQ(progress, (std::vector<int> { 0, 25, 51, 76, 100 }));
}

TEST_F(EModulusEngine, IsoelasticsOfTheDemonstrationLawFollowItsClosedForm)
{
    putTable(QByteArray::fromStdString(Example::demoTableText(Example::demoTableRows())));
    EModulusParams params;
    params.lutId = 5; // the lines always come from table 0
    params.channelWidth = 25.0;
    params.flowRate = 0.06;
    params.viscosityModel = ViscosityManual;
    params.viscosity = 3.0;
    params.pixelSize = 0.5;
    const std::vector<IsoelasticLine> lines = engine.isoelastics(params);
    const double levels[] = { 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.9, 1.2, 1.5, 2.0, 3.0 };
    ASSERT_EQ(lines.size(), 11u);
    const double s = 20.0 / 25.0;
    const double factor = s * s * s * (0.06 / 0.04) * 3.0;
    for (std::size_t k = 0; k < lines.size(); ++k) {
        EXPECT_NEAR(lines[k].value, levels[k] * factor, 1e-12) << k;
        EXPECT_GT(lines[k].points.size(), 100u) << k;
        for (const auto& [area, deform] : lines[k].points) {
            // Areas lie within the table's range carried over to this channel.
            EXPECT_GE(area, 5.0 / (s * s) - 1e-9);
            EXPECT_LE(area, 450.0 / (s * s) + 1e-9);
            const double expected = Example::demoDeformation(area, lines[k].value, 3.0, 0.06, 25.0)
                + pixelationCorrection(area, 0.5);
            EXPECT_NEAR(deform, expected, 0.005 * expected) << "level " << levels[k] << " area " << area;
        }
    }
}

TEST_F(EModulusEngine, ModulusOfExampleEventsIsRecovered)
{
    const QString table = folder.filePath(QStringLiteral("install/") + EModulus::lutFileName);
    ASSERT_TRUE(Example::writeDemoTable(table.toStdString()));
    Example::ExampleSettings settings;
    settings.eventCount = 3000;
    settings.flowRate = 0.08;
    const Example::ExampleEvents events = Example::generateEvents(settings);
    const std::string path = folder.filePath(QStringLiteral("cells.vqd")).toStdString();
    Example::WriteOptions options;
    options.images = options.traces = false;
    ASSERT_TRUE(Example::writeExampleFile(path, settings, events, options));
    ASSERT_TRUE(reader.open(path));

    const EModulusParams params = emodulusParamsFromMetadata(reader.readMetadata(), false);
    ASSERT_TRUE(engine.compute(&reader, params));
    const std::vector<double>& computed = reader.getFeature("emodulus");
    const std::vector<double>& truth = events.columns.at("emodulus");
    ASSERT_EQ(computed.size(), truth.size());
    std::size_t recovered = 0;
    for (std::size_t i = 0; i < truth.size(); ++i) {
        if (std::isnan(computed[i]))
            continue;
        ++recovered;
        EXPECT_NEAR(computed[i], truth[i], 0.01 * truth[i]) << "event " << i;
    }
    // Only cells stiffer than the table reaches (deformation barely above the pixelation) stay NaN.
    EXPECT_GT(recovered, truth.size() * 8 / 10);
}
