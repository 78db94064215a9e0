#include "io/FilterGroupFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

FilterGroup group(int id, const std::string& name, std::vector<FilterRule> rules)
{
    FilterGroup g;
    g.id = id;
    g.name = name;
    g.rules = std::move(rules);
    return g;
}

FilterRule range(const std::string& feature, double low, double high)
{
    FilterRule rule;
    rule.featureName = feature;
    rule.minValue = low;
    rule.maxValue = high;
    return rule;
}

std::vector<FilterGroup> read(const QByteArray& bytes, bool expectOk = true)
{
    std::vector<FilterGroup> groups;
    QString error;
    EXPECT_EQ(readFilterGroupsDocument(bytes, &groups, &error), expectOk) << bytes.toStdString();
    EXPECT_EQ(error.isEmpty(), expectOk);
    return groups;
}

} // namespace

TEST(FilterGroupFile, GroupsComeBackInOrderWithoutIds)
{
    const FilterGroup cells
        = group(7, "Single cells", { range("area_um", 20, 300), range("deform", 0, 0.05) });
    const FilterGroup empty = group(9, "", {});
    const QByteArray bytes = writeFilterGroupsDocument({ &cells, nullptr, &empty });

    const QJsonObject root = QJsonDocument::fromJson(bytes).object();
    EXPECT_EQ(root.value("formatVersion").toInt(), 1);
    EXPECT_EQ(root.keys(), (QStringList { "formatVersion", "groups" }));
    EXPECT_EQ(root.value("groups").toArray().at(0).toObject().keys(), (QStringList { "name", "rules" }));
    // Indented, so that a person can read and diff it.
    EXPECT_TRUE(bytes.contains("\n    \"groups\""));

    const std::vector<FilterGroup> groups = read(bytes);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].id, -1);
    EXPECT_EQ(groups[0].name, "Single cells");
    ASSERT_EQ(groups[0].rules.size(), 2u);
    EXPECT_EQ(groups[0].rules[1].featureName, "deform");
    EXPECT_EQ(groups[0].rules[1].maxValue, 0.05);
    EXPECT_EQ(groups[1].name, "");
    EXPECT_TRUE(groups[1].rules.empty());
}

TEST(FilterGroupFile, OddDocumentsReadWhatTheyHold)
{
    const struct
    {
        const char* text;
        std::vector<std::string> names;
        std::vector<std::size_t> ruleCounts;
    } cases[] = {
        // The version is not looked at.
        { R"({"formatVersion": 99, "groups": [{"name": "A", "rules": [{}]}]})", { "A" }, { 1 } },
        { R"({"groups": []})", {}, {} },
        { R"({"formatVersion": 1})", {}, {} },
        { R"({"groups": {"name": "not an array"}})", {}, {} },
        // Entries that are no objects hold nothing; a rule list of the wrong type holds no rules.
        { R"({"groups": [3, "x", null, {"name": "B", "rules": [1, {"featureName": "deform"}, []]}]})",
            { "B" }, { 1 } },
        { R"({"groups": [{"name": 5, "rules": "none", "colour": "red"}]})", { "" }, { 0 } },
    };
    for (const auto& c : cases) {
        const std::vector<FilterGroup> groups = read(c.text);
        std::vector<std::string> names;
        std::vector<std::size_t> counts;
        for (const FilterGroup& g : groups) {
            names.push_back(g.name);
            counts.push_back(g.rules.size());
        }
        EXPECT_EQ(names, c.names) << c.text;
        EXPECT_EQ(counts, c.ruleCounts) << c.text;
    }
}

TEST(FilterGroupFile, BrokenDocumentsAreRefusedWithAReason)
{
    const FilterGroup cells = group(0, "Cells", { range("area_um", 20, 300) });
    const QByteArray whole = writeFilterGroupsDocument({ &cells });
    for (const QByteArray& bytes : { whole.left(whole.size() / 2), QByteArray(), QByteArray("[1, 2]"),
             QByteArray("\"groups\""), QByteArray("{\"groups\": [}"), QByteArray("\xff\xfe{}") }) {
        const std::vector<FilterGroup> groups = read(bytes, false);
        EXPECT_TRUE(groups.empty());
    }
}
