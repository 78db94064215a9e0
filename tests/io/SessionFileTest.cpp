#include "io/SessionFile.h"

#include "IoTestBase.h"
#include "io/FilterRuleJson.h"
#include "io/VQDReader.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;
using Tessaly::Testing::IoTest;

namespace {

// Digests computed with Python's hashlib over the sorted names joined without separators.
TEST(SessionFeatureHash, SortsNamesAndHashesTheirBytes)
{
    EXPECT_EQ(featureHash({ "deform", "area_um", "fl1_max" }), "0e52e1cf9700");
    EXPECT_EQ(featureHash({ "fl1_max", "deform", "area_um" }), "0e52e1cf9700");
    // A computed feature changes the hash.
    EXPECT_NE(featureHash({ "deform", "area_um", "fl1_max", "emodulus" }), "0e52e1cf9700");
    EXPECT_EQ(featureHash({}), "e3b0c44298fc");
}

QJsonObject parsed(const QByteArray& bytes)
{
    QJsonObject root;
    int version = 0;
    QString error;
    EXPECT_EQ(parseSessionDocument(bytes, &root, &version, &error), SessionParseResult::Ok)
        << error.toStdString();
    return root;
}

QJsonObject objectOf(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

class SessionDocument : public IoTest
{
protected:
    void SetUp() override
    {
        QDir(m_folder.path()).mkpath("data");
        dataPath = QString::fromStdString(pathFor("data/run.vqd"));
        FixtureWriter(dataPath.toStdString())
            .column<double>("deform", { 0.1, 0.2, 0.3 })
            .column<double>("area_um", { 10, 20, 30 })
            .close();
        reader = std::make_shared<VQDReader>();
        ASSERT_TRUE(reader->open(dataPath.toStdString()));
        sessionPath = QString::fromStdString(pathFor("session.TSY"));
    }

    DatasetEntry entryWithEverything() const
    {
        DatasetEntry entry;
        entry.reader = reader;
        entry.filePath = dataPath.toStdString();
        entry.displayName = QStringLiteral("Run ä");
        entry.xFeatureName = "area_um";
        entry.yFeatureName = "deform";
        entry.colorFeatureName = "__density_kde__";
        entry.currentEventIndex = 2;
        entry.contourMode = 2;
        entry.contourFraction1 = 0.25;
        entry.contourFraction2 = 0.8;
        entry.scaleXMode = 1;
        entry.scaleYMode = 2;
        entry.flRefinementApplied = true;
        entry.ctcApplied = true;
        entry.emodApplied = true;
        entry.ctcChannels = { 1, 3 };
        entry.spilloverMatrix = { { 1.0, 0.1 }, { 0.2, 1.0 } };
        FilterRule range;
        range.featureName = "deform";
        range.minValue = 0.15;
        range.maxValue = 0.5;
        range.inverted = true;
        FilterRule polygon;
        polygon.type = PolygonRule;
        polygon.featureName = "area_um";
        polygon.featureNameY = "deform";
        polygon.polygonVertices = { { 0, 0 }, { 40, 0 }, { 40, 1 } };
        polygon.scaleXMode = 1;
        entry.filter.addRule(range);
        entry.filter.addRule(polygon);
        entry.filter.setCombineMode(ShowExcludedEvents);
        entry.filter.setEnabled(true);
        entry.groupEnabled = { { 0, true }, { 4, false } };
        return entry;
    }

    QString dataPath;
    QString sessionPath;
    std::shared_ptr<VQDReader> reader;
};

TEST_F(SessionDocument, DatasetStateComesBackWhole)
{
    const DatasetEntry saved = entryWithEverything();
    SessionSnapshot snapshot;
    snapshot.datasets = { &saved };
    const QJsonObject root = parsed(writeSessionDocument(snapshot, sessionPath));

    const std::vector<QJsonObject> datasets = sessionDatasets(root);
    ASSERT_EQ(datasets.size(), 1u);
    // The path is stored relative to the session and resolved against wherever the session is now.
    EXPECT_EQ(datasets[0].value("filePath").toString(), "data/run.vqd");
    const SessionDatasetRef ref = sessionDatasetRef(datasets[0], QDir("/elsewhere/moved"));
    EXPECT_EQ(ref.filePath, "/elsewhere/moved/data/run.vqd");
    EXPECT_FALSE(ref.isDuplicate);
    EXPECT_EQ(ref.duplicateOfIndex, -1);
    EXPECT_EQ(ref.fingerprint, fingerprintOf(*reader, dataPath));
    EXPECT_EQ(ref.fingerprint.eventCount, 3);
    EXPECT_EQ(ref.fingerprint.fileSize, QFileInfo(dataPath).size());

    DatasetEntry restored;
    restored.displayName = "file name";
    applySessionDataset(datasets[0], &restored);
    EXPECT_EQ(restored.displayName, saved.displayName);
    EXPECT_EQ(restored.xFeatureName, saved.xFeatureName);
    EXPECT_EQ(restored.yFeatureName, saved.yFeatureName);
    EXPECT_EQ(restored.colorFeatureName, saved.colorFeatureName);
    EXPECT_EQ(restored.currentEventIndex, 2);
    EXPECT_EQ(restored.contourMode, 2);
    EXPECT_DOUBLE_EQ(restored.contourFraction1, 0.25);
    EXPECT_DOUBLE_EQ(restored.contourFraction2, 0.8);
    EXPECT_EQ(restored.scaleXMode, 1);
    EXPECT_EQ(restored.scaleYMode, 2);
    EXPECT_TRUE(restored.flRefinementApplied);
    EXPECT_TRUE(restored.ctcApplied);
    EXPECT_TRUE(restored.emodApplied);
    EXPECT_EQ(restored.ctcChannels, saved.ctcChannels);
    EXPECT_EQ(restored.spilloverMatrix, saved.spilloverMatrix);
    EXPECT_TRUE(restored.filter.isEnabled());
    EXPECT_EQ(restored.filter.combineMode(), ShowExcludedEvents);
    ASSERT_EQ(restored.filter.ruleCount(), 2);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(filterRuleToJson(restored.filter.rules()[i]), filterRuleToJson(saved.filter.rules()[i]));
    EXPECT_EQ(restored.groupEnabled, saved.groupEnabled);
}

TEST_F(SessionDocument, OnlyTheFirstSharerOfAReaderIsOpenedTheRestAreDuplicates)
{
    const DatasetEntry first = entryWithEverything();
    DatasetEntry other = first;
    other.reader = std::make_shared<VQDReader>();
    const DatasetEntry copy1 = first;
    const DatasetEntry copy2 = first;
    SessionSnapshot snapshot;
    snapshot.datasets = { &other, &first, &copy1, &copy2 };
    const std::vector<QJsonObject> datasets
        = sessionDatasets(parsed(writeSessionDocument(snapshot, sessionPath)));
    ASSERT_EQ(datasets.size(), 4u);
    const std::vector<std::pair<bool, int>> expected
        = { { false, -1 }, { false, -1 }, { true, 1 }, { true, 1 } };
    for (std::size_t i = 0; i < 4; ++i) {
        const SessionDatasetRef ref = sessionDatasetRef(datasets[i], QDir());
        EXPECT_EQ(ref.isDuplicate, expected[i].first) << i;
        EXPECT_EQ(ref.duplicateOfIndex, expected[i].second) << i;
    }
}

TEST_F(SessionDocument, CompensationInputsAreWrittenOnlyWhenItRan)
{
    DatasetEntry entry = entryWithEverything();
    entry.ctcApplied = false;
    SessionSnapshot snapshot;
    snapshot.datasets = { &entry };
    const QJsonObject stored = sessionDatasets(parsed(writeSessionDocument(snapshot, sessionPath)))[0];
    EXPECT_TRUE(stored.value("ctcChannels").toArray().isEmpty());
    EXPECT_TRUE(stored.value("spilloverMatrix").toArray().isEmpty());
}

TEST_F(SessionDocument, MainWindowAndGroupsComeBack)
{
    const DatasetEntry entry = entryWithEverything();
    FilterGroup g3 { 3, "Live", { entry.filter.rules()[0] } };
    FilterGroup g7 { 7, "", {} };
    SessionSnapshot snapshot;
    snapshot.datasets = { &entry };
    snapshot.activeDatasetIndex = 4;
    snapshot.colorMapIndex = 5;
    snapshot.groups = { &g3, &g7 };
    snapshot.nextGroupId = 9;
    const QByteArray bytes
        = writeSessionDocument(snapshot, sessionPath, QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7), Qt::UTC));
    const QJsonObject root = parsed(bytes);
    EXPECT_EQ(root.value("version").toInt(), 1);
    EXPECT_EQ(root.value("savedAt").toString(), "2026-03-04T05:06:07Z");
    EXPECT_TRUE(root.value("combineWindows").isArray());
    EXPECT_TRUE(root.value("statEvalWindows").isArray());

    const SessionMainWindowState state = sessionMainWindowState(root);
    EXPECT_EQ(state.activeDatasetIndex, 4);
    EXPECT_EQ(state.colorMapIndex, 5);
    EXPECT_FALSE(state.expertMode);

    int next = -1;
    const std::vector<FilterGroup> groups = sessionFilterGroups(root, &next);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].id, 3);
    EXPECT_EQ(groups[0].name, "Live");
    ASSERT_EQ(groups[0].rules.size(), 1u);
    EXPECT_EQ(filterRuleToJson(groups[0].rules[0]), filterRuleToJson(g3.rules[0]));
    EXPECT_EQ(groups[1].id, 7);
    EXPECT_EQ(next, 9);
}

TEST(SessionGroups, BadIdsAreDroppedAndTheCounterPassesEveryIdKept)
{
    const struct
    {
        const char* json;
        std::vector<int> ids;
        int next;
    } cases[] = {
        { R"({"filterGroups":[{"id":-1},{"id":2},{"name":"no id"}],"nextGroupId":1})", { 2 }, 3 },
        { R"({"filterGroups":[{"id":2},{"id":2}],"nextGroupId":10})", { 2 }, 10 },
        { R"({"filterGroups":[{"id":"4"},{"id":1.5},{"id":0}]})", { 0 }, 1 },
        { R"({"filterGroups":{"id":1},"nextGroupId":-3})", {}, 0 },
    };
    for (const auto& c : cases) {
        int next = -1;
        std::vector<int> ids;
        for (const FilterGroup& group : sessionFilterGroups(objectOf(c.json), &next))
            ids.push_back(group.id);
        EXPECT_EQ(ids, c.ids) << c.json;
        EXPECT_EQ(next, c.next) << c.json;
    }
}

// Keys that are missing, or of the wrong JSON type, read as the defaults of a new dataset.
TEST(SessionDatasetKeys, MissingOrMistypedKeysReadAsDefaults)
{
    const char* documents[] = {
        "{}",
        R"({"xFeatureName":3,"yFeatureName":true,"colorFeatureName":[],"currentEventIndex":"7",
            "contourMode":1.5,"contourFraction1":"0.3","contourFraction2":null,"scaleXMode":"1",
            "scaleYMode":{},"flRefinementApplied":1,"ctcApplied":"true","emodApplied":0,
            "filter":[],"groupEnabled":{"groupId":1},"isDuplicate":"yes","duplicateOfIndex":"0",
            "fingerprint":7,"displayName":5})",
    };
    for (const char* json : documents) {
        DatasetEntry entry;
        entry.displayName = "kept";
        entry.xFeatureName = "stale";
        entry.groupEnabled.insert(3, true);
        entry.ctcChannels = { 1 };
        applySessionDataset(objectOf(json), &entry);
        EXPECT_EQ(entry.displayName, "kept") << json;
        EXPECT_EQ(entry.xFeatureName, "") << json;
        EXPECT_EQ(entry.yFeatureName, "") << json;
        EXPECT_EQ(entry.colorFeatureName, "") << json;
        EXPECT_EQ(entry.currentEventIndex, -1) << json;
        EXPECT_EQ(entry.contourMode, 0) << json;
        EXPECT_DOUBLE_EQ(entry.contourFraction1, 0.1) << json;
        EXPECT_DOUBLE_EQ(entry.contourFraction2, 0.67) << json;
        EXPECT_EQ(entry.scaleXMode, 0) << json;
        EXPECT_EQ(entry.scaleYMode, 0) << json;
        EXPECT_FALSE(entry.flRefinementApplied) << json;
        EXPECT_FALSE(entry.ctcApplied) << json;
        EXPECT_FALSE(entry.emodApplied) << json;
        EXPECT_TRUE(entry.ctcChannels.empty()) << json;
        // A missing filter is an empty one that is switched off.
        EXPECT_FALSE(entry.filter.isEnabled()) << json;
        EXPECT_EQ(entry.filter.ruleCount(), 0) << json;
        EXPECT_EQ(entry.filter.combineMode(), ShowPassingEvents) << json;
        EXPECT_TRUE(entry.groupEnabled.isEmpty()) << json;

        const SessionDatasetRef ref = sessionDatasetRef(objectOf(json), QDir("/s"));
        EXPECT_FALSE(ref.isDuplicate) << json;
        EXPECT_EQ(ref.duplicateOfIndex, -1) << json;
        EXPECT_EQ(ref.fingerprint.eventCount, -1) << json;
        EXPECT_EQ(ref.fingerprint.fileSize, -1) << json;
        EXPECT_EQ(ref.fingerprint.featureHash, "") << json;
    }
}

TEST(SessionDatasetKeys, FilterAndGroupSwitchesReadPerEntry)
{
    const struct
    {
        const char* json;
        bool enabled;
        int mode;
        int rules;
    } cases[] = {
        { R"({"filter":{"enabled":true}})", true, ShowPassingEvents, 0 },
        { R"({"filter":{"combineMode":"NOT","rules":[{},"x",{"type":"Polygon"}]}})", false,
            ShowExcludedEvents, 2 },
        { R"({"filter":{"combineMode":"not","enabled":false}})", false, ShowPassingEvents, 0 },
        { R"({"filter":{"combineMode":1}})", false, ShowPassingEvents, 0 },
    };
    for (const auto& c : cases) {
        DatasetEntry entry;
        applySessionDataset(objectOf(c.json), &entry);
        EXPECT_EQ(entry.filter.isEnabled(), c.enabled) << c.json;
        EXPECT_EQ(entry.filter.combineMode(), c.mode) << c.json;
        EXPECT_EQ(entry.filter.ruleCount(), c.rules) << c.json;
    }

    DatasetEntry entry;
    applySessionDataset(
        objectOf(R"({"groupEnabled":[{"groupId":2,"enabled":true},{"enabled":true},{"groupId":5},7]})"),
        &entry);
    // An entry without id switches group 0; one that is no object reads as group 0, off, and the
    // last word on an id counts.
    EXPECT_EQ(entry.groupEnabled.value(2), true);
    EXPECT_EQ(entry.groupEnabled.value(5, true), false);
    EXPECT_TRUE(entry.groupEnabled.contains(0));
    EXPECT_EQ(entry.groupEnabled.size(), 3);
}

TEST(SessionDatasetKeys, CompensationNeedsItsFlagBothKeysAndASquareMatrix)
{
    const struct
    {
        const char* json;
        std::vector<int> channels;
        std::vector<std::vector<double>> matrix;
    } cases[] = {
        { R"({"ctcApplied":true,"ctcChannels":[1,2],"spilloverMatrix":[1,0.5,0.25,1]})", { 1, 2 },
            { { 1, 0.5 }, { 0.25, 1 } } },
        { R"({"ctcApplied":false,"ctcChannels":[1,2],"spilloverMatrix":[1,0.5,0.25,1]})", {}, {} },
        { R"({"ctcApplied":true,"ctcChannels":[1,2]})", {}, {} },
        { R"({"ctcApplied":true,"spilloverMatrix":[1]})", {}, {} },
        { R"({"ctcApplied":true,"ctcChannels":[1,2],"spilloverMatrix":[1,0.5,0.25]})", { 1, 2 }, {} },
    };
    for (const auto& c : cases) {
        DatasetEntry entry;
        applySessionDataset(objectOf(c.json), &entry);
        EXPECT_EQ(entry.ctcChannels, c.channels) << c.json;
        EXPECT_EQ(entry.spilloverMatrix, c.matrix) << c.json;
    }
}

TEST(SessionParsing, RefusesWhatIsNoSessionAndSaysWhy)
{
    const struct
    {
        QByteArray bytes;
        SessionParseResult result;
        int version;
    } cases[] = {
        { "", SessionParseResult::Invalid, 0 },
        { "not json at all", SessionParseResult::Invalid, 0 },
        { R"({"version": 1, "datasets": [)", SessionParseResult::Invalid, 0 },
        { "[1, 2]", SessionParseResult::Unrecognized, 0 },
        { R"({"datasets": []})", SessionParseResult::Unrecognized, 0 },
        { R"({"version": 0})", SessionParseResult::Unrecognized, 0 },
        { R"({"version": "1"})", SessionParseResult::Unrecognized, 0 },
        { R"({"version": 1})", SessionParseResult::Ok, 1 },
        { R"({"version": 3, "unknown": {}})", SessionParseResult::Ok, 3 },
    };
    for (const auto& c : cases) {
        QJsonObject root;
        int version = 0;
        QString error;
        EXPECT_EQ(parseSessionDocument(c.bytes, &root, &version, &error), c.result) << c.bytes.toStdString();
        EXPECT_EQ(version, c.version) << c.bytes.toStdString();
        EXPECT_EQ(error.isEmpty(), c.result != SessionParseResult::Invalid) << c.bytes.toStdString();
    }
}

} // namespace
