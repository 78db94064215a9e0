#include "plot/DotColorCache.h"

#include "plot/ColorMaps.h"
#include "plot/UnitColorTable.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <qwt_color_map.h>
#include <random>

using namespace Tessaly;

// Colours worked out in parallel are those the map gives one by one: at the stops, between them,
// at and beyond both ends of the range, for NaN, and for a map in fixed-colour mode.
TEST(DotColorCache, ParallelColoursAreTheMapsOwn)
{
    const QwtInterval range(-1.5, 2.25);
    QVector<QwtPoint3D> samples;
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> anywhere(-2.0, 3.0);
    for (int i = 0; i < 200000; ++i)
        samples.append(QwtPoint3D(i, i, anywhere(rng)));
    for (const double stop : { 0.0, 0.2, 0.25, 0.4, 0.5, 0.6, 0.75, 0.8, 1.0 })
        samples.append(QwtPoint3D(0, 0, range.minValue() + stop * range.width()));
    samples.append(QwtPoint3D(0, 0, std::numeric_limits<double>::quiet_NaN()));
    struct Series : QwtArraySeriesData<QwtPoint3D>
    {
        explicit Series(const QVector<QwtPoint3D>& points) { d_samples = points; }
        QRectF boundingRect() const override { return {}; }
    } data(samples);

    for (int index = 0; index < 6; ++index) {
        for (const auto mode : { QwtLinearColorMap::ScaledColors, QwtLinearColorMap::FixedColors }) {
            const std::unique_ptr<QwtLinearColorMap> map(colorMapFor(index));
            map->setMode(mode);
            DotColorCache cache;
            const std::vector<QRgb>& colors = cache.colorsFor(data, 1, *map, range);
            ASSERT_EQ(colors.size(), static_cast<std::size_t>(samples.size()));
            for (int i = 0; i < samples.size(); ++i)
                ASSERT_EQ(colors[static_cast<std::size_t>(i)], map->rgb(range, samples[i].z()))
                    << "map " << index << ", mode " << mode << ", value " << samples[i].z();
        }
    }
}

// Where the map's colour changes, between two neighbouring numbers, both sides come out as the map
// gives them, for ranges whose share of a value is rounded in every way. These are the values
// where a table of colours by position could answer for the wrong side.
TEST(DotColorCache, ColoursAtEveryChangeOfColourAreTheMapsOwn)
{
    const QwtInterval ranges[]
        = { QwtInterval(-1.5, 2.25), QwtInterval(0.1, 0.7), QwtInterval(3e-7, 3.0000007e-7) };
    for (const QwtInterval& range : ranges) {
        for (int index = 0; index < 6; ++index) {
            for (const auto mode : { QwtLinearColorMap::ScaledColors, QwtLinearColorMap::FixedColors }) {
                const std::unique_ptr<QwtLinearColorMap> map(colorMapFor(index));
                map->setMode(mode);
                QVector<QwtPoint3D> samples;
                constexpr int steps = 20000;
                double before = range.minValue();
                for (int step = 1; step <= steps; ++step) {
                    double low = before;
                    double high = range.minValue() + range.width() * step / steps;
                    before = high;
                    if (map->rgb(range, low) == map->rgb(range, high))
                        continue;
                    // Narrowed down to two neighbouring numbers of different colour.
                    while (std::nextafter(low, high) != high) {
                        const double middle = low + (high - low) / 2;
                        if (middle <= low || middle >= high)
                            break;
                        (map->rgb(range, middle) == map->rgb(range, low) ? low : high) = middle;
                    }
                    samples.append(QwtPoint3D(0, 0, low));
                    samples.append(QwtPoint3D(0, 0, high));
                }
                ASSERT_GT(samples.size(), mode == QwtLinearColorMap::ScaledColors ? 500 : 0);
                struct Series : QwtArraySeriesData<QwtPoint3D>
                {
                    explicit Series(const QVector<QwtPoint3D>& points) { d_samples = points; }
                    QRectF boundingRect() const override { return {}; }
                } data(samples);
                DotColorCache cache;
                const std::vector<QRgb>& colors = cache.colorsFor(data, 1, *map, range);
                for (int i = 0; i < samples.size(); ++i)
                    ASSERT_EQ(colors[static_cast<std::size_t>(i)], map->rgb(range, samples[i].z()))
                        << "map " << index << ", mode " << mode << ", value " << samples[i].z();
            }
        }
    }
}

// Nearly every cell of a smooth map has one colour, or the table would save nothing.
TEST(DotColorCache, TableAnswersForMostPositions)
{
    for (int index = 0; index < 6; ++index) {
        const std::unique_ptr<QwtLinearColorMap> map(colorMapFor(index));
        const UnitColorTable table(*map);
        EXPECT_GT(table.uniformCellCount(), UnitColorTable::cellCount * 9 / 10) << "map " << index;
    }
}
