#include "io/ColumnHandover.h"

#include "IoTestBase.h"
#include "io/ColumnCheck.h"
#include "io/FileProbe.h"
#include "io/VQDReader.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

constexpr double quietNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// Equal bit for bit, so that NaNs compare too.
bool sameBits(const std::vector<double>& a, const std::vector<double>& b)
{
    return a.size() == b.size()
        && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

template <typename T> std::vector<T> randomValues(std::size_t n, double low, double high, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> distribution(low, high);
    std::vector<T> values(n);
    for (T& value : values)
        value = static_cast<T>(distribution(generator));
    return values;
}

class ColumnHandoverTest : public IoTest
{
protected:
    // Columns of every storage the instrument and other writers use, with partial last chunks,
    // NaNs and infinities, and values that only an exact conversion keeps.
    std::string writeFile()
    {
        const std::string path = pathFor("columns.vqd");
        std::vector<double> doubles = randomValues<double>(2500, -1e6, 1e6, 1);
        doubles[7] = quietNaN;
        doubles[8] = -infinity;
        std::vector<float> floats = randomValues<float>(2500, 0, 1, 2);
        floats[3] = std::numeric_limits<float>::quiet_NaN();
        floats[4] = std::numeric_limits<float>::denorm_min();
        FixtureWriter(path)
            .column<double>("area_um", doubles, Storage::deflate(6, 1000))
            .column<double>("deform", randomValues<double>(2500, 0, 0.3, 3), Storage::shuffledDeflate(4, 700))
            .column<double>("bright_avg", doubles, Storage::contiguous())
            .column<float>("area_msd", floats, Storage::shuffledDeflate(4, 1000))
            .column<float>("aspect", floats, Storage::deflate(1, 2500))
            .column<float>("brightness_sd", floats, Storage::chunked(999))
            .column<std::uint16_t>(
                "fl1_max", randomValues<std::uint16_t>(2500, 0, 65535, 4), Storage::deflate())
            .column<std::int32_t>(
                "frame", randomValues<std::int32_t>(2500, -3e8, 3e8, 5), Storage::shuffledDeflate())
            .integerColumn("index", { -5, std::numeric_limits<std::int64_t>::max(), 0 }, 8, false)
            .boolColumn("flag", { true, false, true })
            .column<double>("empty_feature", {})
            .imageStack("image", 2, 3, 4, std::vector<std::uint8_t>(24, 9))
            .stringAttribute("setup:module composition", "Vortiq")
            .close();
        return path;
    }

    // Every scalar column as the library decodes it in this process.
    static std::map<std::string, std::vector<double>> decodedHere(const std::string& path)
    {
        VQDReader reader;
        EXPECT_TRUE(reader.open(path));
        std::map<std::string, std::vector<double>> columns;
        for (const std::string& name : reader.featureNames())
            if (name != "image")
                columns[name] = reader.getFeature(name);
        return columns;
    }
};

} // namespace

// Columns that the file check's processes decode and hand over are what the library decodes here,
// bit for bit, for every storage; the program then reads none of them itself.
TEST_F(ColumnHandoverTest, HandedOverColumnsAreTheLibrarysOwnDecoding)
{
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    const std::string path = writeFile();
    const std::map<std::string, std::vector<double>> expected = decodedHere(path);
    ASSERT_EQ(expected.size(), 11u);

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    QString failure;
    bool firstIn = false;
    ASSERT_TRUE(ColumnCheck::run(QString::fromStdString(path), reader, &failure, { "deform", "area_msd" },
        [&] { firstIn = reader.isFeatureCached("deform") && reader.isFeatureCached("area_msd"); }))
        << failure.toStdString();
    EXPECT_TRUE(firstIn);
    EXPECT_FALSE(reader.isFeatureCached("image"));
    for (const auto& [name, values] : expected) {
        EXPECT_TRUE(reader.isFeatureCached(name)) << name;
        EXPECT_TRUE(sameBits(reader.getFeature(name), values)) << name;
        EXPECT_FALSE(reader.isComputedFeature(name)) << name;
    }
}

// The columns wanted first make a share of their own; the rest go round the probes. Every listed
// column is decoded once, and one probe reads the frames.
TEST(ColumnCheckShares, EveryColumnIsInOneShare)
{
    using Names = std::vector<std::string>;
    const Names columns { "a", "b", "c", "d", "e" };
    struct Case
    {
        Names first;
        int probes;
        std::vector<Names> shares;
    };
    const Case cases[] = {
        { {}, 2, { { "a", "c", "e" }, { "b", "d" } } },
        { { "d", "b" }, 2, { { "d", "b" }, { "a", "e" }, { "c" } } },
        // Wanted columns that the file lacks, or twice, change nothing.
        { { "b", "x", "b" }, 1, { { "b" }, { "a", "c", "d", "e" } } },
        { { "x" }, 3, { { "a", "d" }, { "b", "e" }, { "c" } } },
        // A probe without columns is left out, but for the one that reads the frames.
        { {}, 7, { { "a" }, { "b" }, { "c" }, { "d" }, { "e" } } },
        { columns, 2, { columns, {} } },
    };
    for (const Case& c : cases) {
        const std::vector<ColumnShare> shares = ColumnCheck::shares(columns, c.first, c.probes);
        ASSERT_EQ(shares.size(), c.shares.size()) << c.probes;
        int frames = 0;
        for (std::size_t i = 0; i < shares.size(); ++i) {
            EXPECT_EQ(shares[i].columns, c.shares[i]) << i;
            frames += shares[i].frames ? 1 : 0;
        }
        EXPECT_EQ(frames, 1);
        const bool leading = std::any_of(c.first.begin(), c.first.end(), [&columns](const std::string& name) {
            return std::find(columns.begin(), columns.end(), name) != columns.end();
        });
        EXPECT_EQ(shares.front().frames, !leading);
    }
    EXPECT_EQ(ColumnCheck::shares({}, {}, 2).size(), 1u);
}

// A share travels to the probe program as options and comes back whole.
TEST(ColumnCheckShares, OptionsGiveTheShareBack)
{
    ColumnShare share;
    share.columns = { "area_um", "--odd name", "deform" };
    share.frames = false;
    share.output = QStringLiteral("/tmp/out put");
    QStringList arguments = share.options() << QStringLiteral("/data/file.vqd");
    ColumnShare parsed;
    ASSERT_TRUE(ColumnShare::parse(arguments, parsed));
    EXPECT_EQ(arguments, QStringList { QStringLiteral("/data/file.vqd") });
    EXPECT_EQ(parsed.columns, share.columns);
    EXPECT_FALSE(parsed.frames);
    EXPECT_EQ(parsed.output, share.output);

    for (QStringList wrong :
        { QStringList { "--colour", "x", "f.vqd" }, QStringList { "--column", "f.vqd" } })
        EXPECT_FALSE(ColumnShare::parse(wrong, parsed)) << wrong.join(' ').toStdString();
}

// Probes that each run their share, in this process here, hand over every column once.
TEST_F(ColumnHandoverTest, SharesRunByTheProbeCoverEveryColumn)
{
    const std::string path = writeFile();
    const std::map<std::string, std::vector<double>> expected = decodedHere(path);
    std::vector<std::string> names;
    for (const auto& entry : expected)
        names.push_back(entry.first);
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    int adopted = 0;
    for (ColumnShare share : ColumnCheck::shares(names, { "frame" }, 3)) {
        QTemporaryFile output;
        ASSERT_TRUE(output.open());
        share.output = output.fileName();
        ASSERT_EQ(FileProbe::runProbe(QString::fromStdString(path), FileProbe::Scope::Columns, &share), 0);
        const int taken = ColumnHandover::adoptFile(output.fileName(), reader);
        EXPECT_EQ(taken, static_cast<int>(share.columns.size()));
        adopted += taken;
    }
    EXPECT_EQ(adopted, 11);
    for (const auto& [name, values] : expected)
        EXPECT_TRUE(reader.isFeatureCached(name) && sameBits(reader.getFeature(name), values)) << name;
}

// A hand-over comes from another process and is not trusted: a record is taken only for a listed
// stored column that isn't cached yet, with the dataset's own number of values, all of them present;
// the first record that fails ends the reading, and nothing of it reaches the cache.
TEST_F(ColumnHandoverTest, OnlyRecordsThatFitTheFileAreAdopted)
{
    const std::string path = pathFor("small.vqd");
    FixtureWriter(path)
        .column<double>("area_um", { 1, 2, 3 })
        .column<float>("deform", { 0.5f, 0.25f, 0.125f }, Storage::deflate())
        .imageStack("image", 3, 2, 2, std::vector<std::uint8_t>(12, 1))
        .close();
    // A record as the probe writes it, but with the count it claims, whatever number of values
    // follows.
    const auto bytesOf
        = [](const auto& value) { return QByteArray(reinterpret_cast<const char*>(&value), sizeof value); };
    const auto record = [&bytesOf](const std::string& name, std::vector<double> values, std::uint64_t count) {
        QByteArray bytes = bytesOf(static_cast<std::uint32_t>(name.size())) + bytesOf(std::uint32_t { 0 })
            + QByteArray::fromStdString(name) + QByteArray(static_cast<int>((8 - name.size() % 8) % 8), '\0')
            + bytesOf(count);
        for (const double value : values)
            bytes += bytesOf(value);
        return bytes;
    };
    const QByteArray start("TSYCOLS1");
    const QByteArray area = record("area_um", { 7, 8, 9 }, 3);
    const QByteArray deform = record("deform", { 4, 5, 6 }, 3);
    const QByteArray overlong = record(std::string(ColumnHandover::maxNameLength + 1, 'a'), { 1 }, 1);
    // The writer makes the same records.
    QBuffer written;
    written.open(QIODevice::WriteOnly);
    ASSERT_TRUE(
        ColumnHandover::writeStart(written) && ColumnHandover::writeColumn(written, "area_um", { 7, 8, 9 }));
    EXPECT_EQ(written.data(), start + area);
    EXPECT_FALSE(ColumnHandover::writeColumn(written, "", {}));

    struct Case
    {
        const char* what;
        QByteArray stream;
        std::vector<std::string> adopted;
    };
    const Case cases[] = {
        { "two sound records", start + area + deform, { "area_um", "deform" } },
        { "no stream", QByteArray(), {} },
        { "another start", QByteArray("TSYCOLS0") + area, {} },
        { "fewer values than the dataset", start + record("area_um", { 1, 2 }, 2) + deform, {} },
        { "more values than the dataset", start + record("area_um", { 1, 2, 3, 4 }, 4), {} },
        { "a count in the billions", start + record("area_um", { 1, 2, 3 }, std::uint64_t { 1 } << 60), {} },
        { "values cut short", start + deform + area.left(area.size() - 1), { "deform" } },
        { "a name cut short", start + area + deform.left(6), { "area_um" } },
        { "no such column", start + record("volume", { 1, 2, 3 }, 3) + area, {} },
        { "a frame stack", start + record("image", { 1, 2, 3 }, 3), {} },
        { "an empty name", start + record("", {}, 0) + area, {} },
        { "a name too long", start + overlong + area, {} },
        { "a column twice", start + area + record("area_um", { 0, 0, 0 }, 3) + deform, { "area_um" } },
    };
    for (const Case& c : cases) {
        VQDReader reader;
        ASSERT_TRUE(reader.open(path));
        EXPECT_EQ(ColumnHandover::adopt(c.stream, reader), static_cast<int>(c.adopted.size())) << c.what;
        for (const std::string& name :
            { std::string("area_um"), std::string("deform"), std::string("image") }) {
            const bool adopted = std::find(c.adopted.begin(), c.adopted.end(), name) != c.adopted.end();
            EXPECT_EQ(reader.isFeatureCached(name), adopted) << c.what << ": " << name;
        }
        if (!c.adopted.empty()) {
            EXPECT_EQ(reader.getFeature(c.adopted.front()),
                c.adopted.front() == "area_um" ? std::vector<double>({ 7, 8, 9 })
                                               : std::vector<double>({ 4, 5, 6 }))
                << c.what;
        }
    }

    // A computed column has no stored values to stand for; one read already is not replaced.
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    reader.setFeature("volume", { 1, 2, 3 });
    reader.getFeature("deform");
    for (const QByteArray& stream : { start + record("volume", { 4, 5, 6 }, 3), start + deform })
        EXPECT_EQ(ColumnHandover::adopt(stream, reader), 0);
    EXPECT_EQ(reader.getFeature("volume"), std::vector<double>({ 1, 2, 3 }));
    EXPECT_EQ(reader.getFeature("deform"), std::vector<double>({ 0.5, 0.25, 0.125 }));
}

// Hand-overs left by a program that was killed go at the next start; a check in progress, whose
// files are young, and files of other names are left alone.
TEST(ColumnCheckLeftOvers, OnlyOldHandoversAreRemoved)
{
    QTemporaryDir folder;
    const auto write = [&](const QString& name, const QDateTime& modified) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("columns");
        file.flush();
        ASSERT_TRUE(file.setFileTime(modified, QFileDevice::FileModificationTime));
    };
    const QDateTime now = QDateTime::currentDateTime();
    write(QStringLiteral("tessaly-columns-old1"), now.addDays(-2));
    write(QStringLiteral("tessaly-columns-old2"), now.addSecs(-7200));
    write(QStringLiteral("tessaly-columns-young"), now.addSecs(-60));
    write(QStringLiteral("measurement-old.vqd"), now.addDays(-2));

    EXPECT_EQ(ColumnCheck::removeLeftOverHandovers(folder.path(), now.addSecs(-3600)), 2);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files, QDir::Name),
        (QStringList { QStringLiteral("measurement-old.vqd"), QStringLiteral("tessaly-columns-young") }));
}
