// What a refresh puts on screen, pinned to the bit: the plotted points and the events behind them,
// the colours, the contour lines and the statistics, for realistic data under several settings.
// The digests were taken from the straightforward one-thread pipeline; a faster pipeline (threads,
// reuse of one density estimate for colour and contours, selection instead of sorting) must give
// the same bits.
#include "MainWindowFixture.h"
#include "plot/ScatterPlot.h"
#include "stats/DistributionStats.h"

#include <QComboBox>
#include <QSpinBox>
#include <QTreeWidget>
#include <cstdint>
#include <cstring>
#include <qwt_plot_curve.h>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

namespace {

// FNV-1a over the bytes of everything added.
class Digest
{
public:
    void add(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i) {
            value ^= bytes[i];
            value *= 1099511628211ULL;
        }
    }
    template <typename T> void add(const std::vector<T>& values)
    {
        const std::uint64_t size = values.size();
        add(&size, sizeof size);
        add(values.data(), values.size() * sizeof(T));
    }
    void add(double v) { add(&v, sizeof v); }
    std::uint64_t result() const { return value; }

private:
    std::uint64_t value = 14695981039346656037ULL;
};

FilterRule range(const char* feature, double low, double high, bool inverted = false)
{
    FilterRule rule;
    rule.featureName = feature;
    rule.minValue = low;
    rule.maxValue = high;
    rule.inverted = inverted;
    return rule;
}

FilterRule polygon(const char* x, const char* y, std::vector<PlanePoint> vertices)
{
    FilterRule rule;
    rule.type = PolygonRule;
    rule.featureName = x;
    rule.featureNameY = y;
    rule.polygonVertices = std::move(vertices);
    return rule;
}

struct Setting
{
    const char* name;
    const char* x;
    const char* y;
    const char* color; // item data of "Color by"; empty for none
    int scaleX;
    int scaleY;
    int contourMode;
    std::vector<FilterRule> rules;
    std::uint64_t digest3k; // of a 3,000-event file
    std::uint64_t digest150k; // of a 150,000-event file
};

const std::vector<Setting>& settings()
{
    static const std::vector<Setting> table {
        { "three ranges, density, contours", "area_um", "deform", "__density_kde__", 0, 0, 1,
            { range("area_um", 30, 200), range("deform", 0.008, 0.1), range("bright_avg", 60, 140) },
            0x96d59a0643b0a166ULL, 0x4fb4adba636845b0ULL },
        { "log axes, density, contours", "area_um", "deform", "__density_kde__", 1, 1, 1,
            { range("area_um", 40, 90, true) }, 0xff4ce3a820ef70f9ULL, 0x111ef4fc8ae4cc3fULL },
        // Positions across the channel are negative for half the cells: a log axis can't draw them.
        { "log axis over negative values, contours only", "pos_y", "deform", "", 1, 0, 2, {},
            0xc8f9548eb9f9f34bULL, 0x1f695c20d3527f2ULL },
        { "feature colour, pseudo-log, polygon", "area_um", "bright_avg", "fl1_max", 2, 2, 1,
            { polygon("area_um", "deform", { { 20, 0.0 }, { 250, 0.0 }, { 250, 0.12 }, { 20, 0.06 } }) },
            0x11048ef70422a064ULL, 0xcf70e5ef1f0694d3ULL },
        { "density over the whole file, no contours", "deform", "area_um", "__density_kde__", 0, 2, 0, {},
            0xc28f96dc8661e844ULL, 0x7b7d9b3d48094f21ULL },
    };
    return table;
}

} // namespace

class MainWindowRefreshResults : public MainWindowFixture
{
protected:
    std::uint64_t refreshDigest(const Setting& setting)
    {
        DatasetEntry* entry = window->datasets().front();
        entry->filter = EventFilter();
        for (const FilterRule& rule : setting.rules)
            entry->filter.addRule(rule);
        const auto choose = [this](const char* name, const QString& key) {
            auto* combo = window->findChild<QComboBox*>(QString::fromLatin1(name));
            const int index = combo->findData(key);
            EXPECT_GE(index, 0) << name << " " << key.toStdString();
            combo->setCurrentIndex(index);
        };
        choose("xFeatureCombo", QString::fromLatin1(setting.x));
        choose("yFeatureCombo", QString::fromLatin1(setting.y));
        choose("colorFeatureCombo", QString::fromLatin1(setting.color));
        window->findChild<QComboBox*>("xScaleCombo")->setCurrentIndex(setting.scaleX);
        window->findChild<QComboBox*>("yScaleCombo")->setCurrentIndex(setting.scaleY);
        window->findChild<QComboBox*>("contourCombo")->setCurrentIndex(setting.contourMode);
        window->onFilterChanged();
        // Each setting shows something: points, and contour lines where they are asked for.
        auto* plot = window->findChild<ScatterPlot*>("scatterPlot");
        EXPECT_GT(window->plottedX().size(), 100u) << setting.name;
        EXPECT_EQ(plot->contours().empty(), setting.contourMode == 0) << setting.name;

        Digest digest;
        digest.add(window->plottedX());
        digest.add(window->plottedY());
        digest.add(window->plottedColor());
        digest.add(window->plottedEvents());
        for (const std::vector<double>* values : { &window->plottedX(), &window->plottedY() }) {
            const DistributionStats stats = computeDistributionStats(*values);
            for (const double v : { stats.mean, stats.sd, stats.q1, stats.median, stats.q3, stats.iqr })
                digest.add(v);
        }
        for (const QwtPlotCurve* curve : plot->contours()) {
            for (std::size_t i = 0; i < curve->dataSize(); ++i) {
                const QPointF point = curve->sample(i);
                digest.add(point.x());
                digest.add(point.y());
            }
        }
        // The dock's figures, as the person reads them.
        auto* table = window->findChild<QTreeWidget*>("statisticsTable");
        for (int row = 0; row < table->topLevelItemCount(); ++row) {
            for (int column = 1; column < 3; ++column) {
                const QByteArray text = table->topLevelItem(row)->text(column).toUtf8();
                digest.add(text.constData(), static_cast<std::size_t>(text.size()));
            }
        }
        return digest.result();
    }

    void checkAll(std::size_t events, std::uint64_t Setting::*expected)
    {
        makeWindow();
        window->openDataset(writeDataset(QStringLiteral("run.vqd"), QStringLiteral("Run"), events));
        ASSERT_TRUE(waitUntilIdle(120000));
        ASSERT_EQ(window->datasets().size(), 1u);
        for (const Setting& setting : settings()) {
            const std::uint64_t actual = refreshDigest(setting);
            EXPECT_EQ(actual, setting.*expected)
                << setting.name << ": 0x" << std::hex << actual << "ULL" << std::dec;
        }
    }
};

TEST_F(MainWindowRefreshResults, SmallFileGivesTheSameBitsUnderEverySetting)
{
    checkAll(3000, &Setting::digest3k);
}

TEST_F(MainWindowRefreshResults, LargeFileGivesTheSameBitsUnderEverySetting)
{
    checkAll(150000, &Setting::digest150k);
}
