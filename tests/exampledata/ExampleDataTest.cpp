#include "ExampleEvents.h"
#include "FrameRenderer.h"
#include "io/VQDReader.h"

#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly::ExampleData;

namespace {
constexpr double kPi = 3.14159265358979323846;
}

TEST(ExampleData, EllipsePerimeterMatchesTheEllipticIntegral)
{
    // Reference values: 4 a E(1 - b²/a²) with the complete elliptic integral of the second kind.
    EXPECT_NEAR(ellipsePerimeter(1.0, 1.0), 2.0 * kPi, 1e-12);
    EXPECT_NEAR(ellipsePerimeter(2.0, 1.0), 9.688448220547675, 1e-6);
    EXPECT_NEAR(ellipsePerimeter(5.0, 1.0), 21.010044539689005, 1e-4);
}

TEST(ExampleData, ScalarFeaturesDescribeTheDrawnEllipse)
{
    ExampleSettings settings;
    settings.eventCount = 500;
    const ExampleEvents events = generateEvents(settings);
    ASSERT_EQ(events.cells.size(), 500u);
    for (const auto& [name, column] : events.columns)
        ASSERT_EQ(column.size(), 500u) << name;

    const auto& area = events.columns.at("area_um");
    const auto& deform = events.columns.at("deform");
    for (std::size_t i = 0; i < events.cells.size(); ++i) {
        const CellShape& cell = events.cells[i];
        EXPECT_NEAR(kPi * cell.semiAxisX * cell.semiAxisY, area[i], 1e-9 * area[i]);
        const double perimeter = ellipsePerimeter(cell.semiAxisX, cell.semiAxisY);
        EXPECT_NEAR(1.0 - 2.0 * std::sqrt(kPi * area[i]) / perimeter, deform[i], 1e-9);
        EXPECT_DOUBLE_EQ(events.columns.at("circ")[i], 1.0 - deform[i]);
        EXPECT_DOUBLE_EQ(events.columns.at("size_x")[i], 2.0 * cell.semiAxisX);
        EXPECT_GE(cell.semiAxisX, cell.semiAxisY);
        // The cell lies inside the channel.
        EXPECT_LE(std::abs(cell.centreY) + cell.semiAxisY, 0.5 * settings.channelWidth);
    }
}

TEST(ExampleData, SameSeedSameEventsOtherSeedOthers)
{
    ExampleSettings settings;
    settings.eventCount = 200;
    const ExampleEvents a = generateEvents(settings);
    const ExampleEvents b = generateEvents(settings);
    settings.seed = 2;
    const ExampleEvents c = generateEvents(settings);
    EXPECT_EQ(a.columns, b.columns);
    EXPECT_NE(a.columns.at("deform"), c.columns.at("deform"));
}

TEST(ExampleData, MaskAndTracesAgreeWithTheFeatures)
{
    ExampleSettings settings;
    settings.eventCount = 40;
    const ExampleEvents events = generateEvents(settings);
    const FrameRenderer renderer(settings);
    std::mt19937_64 rng(7);
    const std::size_t pixels = static_cast<std::size_t>(settings.frameWidth) * settings.frameHeight;
    std::vector<std::uint8_t> image(pixels), mask(pixels);
    std::vector<std::int16_t> traces[3];
    for (std::size_t i = 0; i < events.cells.size(); ++i) {
        renderer.render(events.cells[i], rng, image.data(), mask.data());
        const auto inside = std::count(mask.begin(), mask.end(), 255);
        EXPECT_EQ(inside + std::count(mask.begin(), mask.end(), 0), static_cast<long>(pixels));
        // Pixel counting of an ellipse a few pixels across is within a few percent of its area.
        EXPECT_NEAR(inside, events.columns.at("area_msd")[i], 0.06 * events.columns.at("area_msd")[i] + 4);

        renderer.renderTraces(events.cells[i], rng, traces);
        for (int c = 0; c < 3; ++c) {
            const std::string prefix = "fl" + std::to_string(c + 1);
            ASSERT_EQ(traces[c].size(), static_cast<std::size_t>(settings.traceLength));
            const auto peak = std::max_element(traces[c].begin(), traces[c].end());
            EXPECT_NEAR(*peak, events.columns.at(prefix + "_max")[i], 30.0) << prefix;
            if (events.columns.at(prefix + "_max")[i] > 500.0) {
                EXPECT_NEAR(peak - traces[c].begin(), events.columns.at(prefix + "_pos")[i], 2.0) << prefix;
            }
        }
    }
}

TEST(ExampleData, ToolRefusesEventCountsOutsideItsRange)
{
    QTemporaryDir dir;
    const QString output = dir.filePath("too_small.vqd");
    QProcess tool;
    tool.start(TESSALY_EXAMPLE_TOOL, { "--events", "50", output });
    ASSERT_TRUE(tool.waitForFinished(30000));
    EXPECT_EQ(tool.exitCode(), 2);
    EXPECT_FALSE(QFile::exists(output));
}

// What the tool writes is what the reader expects: instrument data, every column as long as the
// event count, frames and traces where asked for, in each storage the tool offers.
TEST(ExampleData, WrittenFilesReadBackAsInstrumentData)
{
    QTemporaryDir dir;
    const std::vector<QStringList> variants = {
        { "--events", "150" },
        { "--events", "120", "--compression", "zstd", "--float32" },
        { "--events", "300", "--compression", "deflate", "--images-up-to", "200" },
    };
    for (std::size_t v = 0; v < variants.size(); ++v) {
        const QString output = dir.filePath(QString("example%1.vqd").arg(v));
        QProcess tool;
        tool.start(TESSALY_EXAMPLE_TOOL, variants[v] + QStringList { output });
        ASSERT_TRUE(tool.waitForFinished(60000));
        ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();

        Tessaly::VQDReader reader;
        ASSERT_TRUE(reader.open(output.toStdString()));
        const Tessaly::VQDMetadata metadata = reader.readMetadata();
        EXPECT_TRUE(reader.isInstrumentData());
        const std::size_t events = variants[v][1].toULong();
        EXPECT_EQ(reader.eventCount(), events);
        const bool perEventData = v != 2;
        EXPECT_EQ(reader.hasImage(), perEventData);
        EXPECT_EQ(reader.hasMask(), perEventData);
        EXPECT_EQ(reader.hasTraces(), perEventData);
        if (perEventData) {
            EXPECT_EQ(reader.traceNames(),
                (std::vector<std::string> {
                    "fl1_median", "fl1_raw", "fl2_median", "fl2_raw", "fl3_median", "fl3_raw" }));
            EXPECT_EQ(reader.traceLength(), 160u);
        }
        EXPECT_GE(reader.featureNames().size(), 30u);
        for (const std::string& name : reader.featureNames()) {
            if (name == "image" || name == "mask")
                continue;
            const auto& column = reader.getFeature(name);
            EXPECT_EQ(column.size(), events) << name;
            EXPECT_TRUE(std::all_of(column.begin(), column.end(), [](double x) { return std::isfinite(x); }))
                << name;
        }
        EXPECT_EQ(metadata.setup.at("channel width"), "20.000000");
        EXPECT_EQ(metadata.imaging.at("pixel size"), "0.340000");
        ASSERT_EQ(metadata.polygonFilters.size(), 1u);
        EXPECT_EQ(metadata.polygonFilters[0].xFeature, "area_um");
        EXPECT_EQ(metadata.polygonFilters[0].yFeature, "deform");
        EXPECT_EQ(reader.featureLabel("userdef0"), "Velocity [mm/s]");
    }
}
