#include "io/TsvWriter.h"

#include "IoTestBase.h"
#include "io/VQDReader.h"

#include <QFile>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

std::string today()
{
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    char text[16];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d", &local));
}

std::string readText(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
}

class TsvWriterTest : public IoTest
{
};

} // namespace

TEST(TsvValueFormat, ValuesHaveSeventeenSignificantDigitsAsPrintfWritesThem)
{
    // Expected texts from Python's "%.17g" formatting.
    const std::pair<double, const char*> cases[] = {
        { 0.1, "0.10000000000000001" },
        { 1.0, "1" },
        { -0.0, "-0" },
        { 0.0, "0" },
        { 2.5, "2.5" },
        { -3.25, "-3.25" },
        { 1e15, "1000000000000000" },
        { 999999999999999.0, "999999999999999" },
        { 1e16, "10000000000000000" },
        { 1e17, "1e+17" },
        { 123456789012345678.0, "1.2345678901234568e+17" },
        { 1e-5, "1.0000000000000001e-05" },
        { 0.30000000000000004, "0.30000000000000004" },
        { 5e-324, "4.9406564584124654e-324" },
        { std::numeric_limits<double>::infinity(), "inf" },
        { std::numeric_limits<double>::quiet_NaN(), "nan" },
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(formatSignificant17(value), text);
}

TEST(TsvValueFormat, AgreesWithTheCLibraryOnRandomDoublesAndReadsBackExactly)
{
    std::mt19937_64 generator(7);
    std::uniform_int_distribution<int> wholeOrNot(0, 3);
    char expected[64];
    for (int i = 0; i < 20000; ++i) {
        double value;
        const std::uint64_t bits = generator();
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value))
            continue;
        // Every fourth value a whole number, which has a path of its own.
        if (wholeOrNot(generator) == 0)
            value = std::trunc(std::fmod(value, 1e16));
        std::snprintf(expected, sizeof expected, "%.17g", value);
        const std::string text = formatSignificant17(value);
        ASSERT_EQ(text, expected);
        ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
    }
}

TEST(TsvValueFormat, AgreesWithTheCLibraryOnMeasuredValues)
{
    // Values as features hold them: spread over many decades, single precision widened to double,
    // decimal fractions, and the neighbours of powers of ten, where the decimal exponent changes.
    std::mt19937_64 generator(11);
    std::uniform_real_distribution<double> decades(-7.0, 17.0);
    std::vector<double> values;
    for (int i = 0; i < 30000; ++i) {
        const double value = std::pow(10.0, decades(generator));
        values.push_back(value);
        values.push_back(static_cast<float>(value));
        values.push_back(-std::round(value * 1000.0) / 1000.0);
    }
    for (int p = -6; p <= 16; ++p) {
        const double power = std::pow(10.0, p);
        values.push_back(power);
        values.push_back(std::nextafter(power, 0.0));
        values.push_back(std::nextafter(power, 1e300));
    }
    char expected[64];
    for (double value : values) {
        std::snprintf(expected, sizeof expected, "%.17g", value);
        ASSERT_EQ(formatSignificant17(value), expected) << "of " << expected;
    }
}

TEST_F(TsvWriterTest, HeaderLabelsAndRowsFollowTheEventList)
{
    const std::string source = pathFor("source.vqd");
    FixtureWriter(source)
        .column<double>("deform", { 0.1, 0.2, 0.3 })
        .column<std::int32_t>("frame", { 7, 8, 9 })
        .column<double>("short", { 1.5 }) // shorter than the events: empty cells after its end
        .stringAttribute("setup:module composition", "Vortiq AcCellerator")
        .stringAttribute("experiment:sample", "Blood")
        .stringAttribute("experiment:note", "two\nlines")
        .close();
    VQDReader reader;
    ASSERT_TRUE(reader.open(source));
    const VQDMetadata metadata = reader.readMetadata();

    TsvExport table;
    table.features = { "deform", "short", "frame" };
    table.events = { 2, 0 };
    table.changedSampleName = "Blood B";
    const std::string path = pathFor("table.tsv");
    ASSERT_TRUE(writeTsv(path, reader, metadata, table));
    EXPECT_EQ(readText(path),
        "# Tessaly TSV Export\n"
        "# export:date = "
            + today()
            + "\n"
              "# export:event count = 2\n"
              "# export:changed sample name = Blood B\n"
              "# experiment:note = two lines\n"
              "# experiment:sample = Blood\n"
              "# setup:module composition = Vortiq AcCellerator\n"
              "#\n"
              "Deformation\tshort\tVideo frame number\n"
              "0.29999999999999999\t\t9\n"
              "0.10000000000000001\t1.5\t7\n");

    // Without a changed name there is no line for it.
    table.changedSampleName.clear();
    ASSERT_TRUE(writeTsv(path, reader, metadata, table));
    EXPECT_EQ(readText(path).find("changed sample name"), std::string::npos);
}

TEST_F(TsvWriterTest, ManyRowsComeOutInOrderAcrossFormattingBlocks)
{
    const std::string source = pathFor("source.vqd");
    std::vector<double> values(100000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<double>(i);
    FixtureWriter(source).column<double>("index", values).close();
    VQDReader reader;
    ASSERT_TRUE(reader.open(source));
    TsvExport table;
    table.features = { "index" };
    for (std::int32_t i = 99999; i >= 0; i -= 3)
        table.events.push_back(i);
    const std::string path = pathFor("table.tsv");
    ASSERT_TRUE(writeTsv(path, reader, reader.readMetadata(), table));

    const std::string text = readText(path);
    const std::size_t labels = text.find("#\n") + 2;
    const std::size_t body = text.find('\n', labels) + 1;
    std::string expected;
    for (std::int32_t event : table.events)
        expected += std::to_string(event) + '\n';
    // Compared as a whole but reported briefly: the texts are 200 kB long.
    EXPECT_EQ(text.size() - body, expected.size());
    EXPECT_TRUE(text.compare(body, std::string::npos, expected) == 0);
}

TEST_F(TsvWriterTest, AnUnwritablePathFails)
{
    VQDReader reader;
    TsvExport table;
    EXPECT_FALSE(writeTsv(pathFor("missing-folder/table.tsv"), reader, {}, table));
    EXPECT_FALSE(writeTsv("/dev/full", reader, {}, table));
}

TEST_F(TsvWriterTest, WideTablesOfEveryKindOfValueMatchTheCLibraryAcrossBlocks)
{
    // Enough columns that a block holds fewer rows, and enough rows for several blocks; the values
    // mix every way a cell is written (whole, fixed, exponent, signs, zero, inf, nan) with the longest
    // cells next to the shortest, so a cell that writes past its own text or a block that loses its
    // end shows.
    const std::string source = pathFor("source.vqd");
    FixtureWriter(source).column<double>("index", std::vector<double>(30000, 0.0)).close();
    VQDReader reader;
    ASSERT_TRUE(reader.open(source));
    std::mt19937_64 generator(3);
    std::uniform_real_distribution<double> decades(-8.0, 20.0);
    const double specials[] = { 0.0, -0.0, 5e-324, -4.9406564584124654e-324, 1e-4, 0.1, 99999999999999.98,
        1e15, -1.7976931348623157e308, std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN() };
    TsvExport table;
    for (int c = 0; c < 70; ++c) {
        std::vector<double> values(c == 69 ? 20000 : 30000); // the last column ends early
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double magnitude = std::pow(10.0, decades(generator));
            const double value = (i + c) % 7 == 0 ? specials[(i * 31 + c) % std::size(specials)]
                : (i + c) % 5 == 0                ? std::round(magnitude)
                : (i + c) % 3 == 0                ? static_cast<double>(static_cast<float>(magnitude))
                                                  : magnitude;
            values[i] = i % 2 == 0 ? value : -value;
        }
        const std::string name = "column_" + std::to_string(c);
        reader.setFeature(name, std::move(values));
        table.features.push_back(name);
    }
    for (std::int32_t i = 0; i < 30000; i += 2)
        table.events.push_back(i);
    for (std::int32_t i = 29999; i > 0; i -= 2)
        table.events.push_back(i);
    const std::string path = pathFor("table.tsv");
    ASSERT_TRUE(writeTsv(path, reader, reader.readMetadata(), table));

    std::string expected;
    char cell[64];
    for (std::int32_t event : table.events) {
        for (std::size_t c = 0; c < table.features.size(); ++c) {
            if (c > 0)
                expected += '\t';
            const std::vector<double>& column = reader.getFeature(table.features[c]);
            if (static_cast<std::size_t>(event) < column.size())
                expected.append(cell, std::snprintf(cell, sizeof cell, "%.17g", column[event]));
        }
        expected += '\n';
    }
    const std::string text = readText(path);
    const std::size_t labels = text.find("#\n") + 2;
    const std::size_t body = text.find('\n', labels) + 1;
    ASSERT_EQ(text.size() - body, expected.size());
    // The first differing line, rather than megabytes of text.
    const auto [differs, _] = std::mismatch(expected.begin(), expected.end(), text.begin() + body);
    if (differs != expected.end()) {
        const std::size_t at = static_cast<std::size_t>(differs - expected.begin());
        const std::size_t line = expected.rfind('\n', at) + 1;
        ADD_FAILURE() << "line " << std::count(expected.begin(), expected.begin() + at, '\n') << ": "
                      << expected.substr(line, expected.find('\n', at) - line);
    }
}
