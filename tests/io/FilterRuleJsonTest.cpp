#include "io/FilterRuleJson.h"

#include "io/FilterGroupFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

// Every field differs from its default, so that a field that is lost or swapped shows.
FilterRule everyFieldSet()
{
    FilterRule rule;
    rule.type = PolygonRule;
    rule.featureName = "area_um";
    rule.featureNameY = "deform";
    rule.minValue = -0.125;
    rule.maxValue = 1234567.0078125;
    rule.polygonVertices = { { 10.5, 0.01 }, { 200.25, 0.02 }, { 1e-7, -3e12 } };
    rule.scaleXMode = 1;
    rule.scaleYMode = 2;
    rule.enabled = false;
    rule.inverted = true;
    rule.propagationId = "{6b1f0a3e-2c57-4d5e-9a0f-0123456789ab}";
    return rule;
}

void expectSameRule(const FilterRule& actual, const FilterRule& expected)
{
    EXPECT_EQ(actual.type, expected.type);
    EXPECT_EQ(actual.featureName, expected.featureName);
    EXPECT_EQ(actual.featureNameY, expected.featureNameY);
    EXPECT_EQ(actual.minValue, expected.minValue);
    EXPECT_EQ(actual.maxValue, expected.maxValue);
    EXPECT_EQ(actual.polygonVertices, expected.polygonVertices);
    EXPECT_EQ(actual.scaleXMode, expected.scaleXMode);
    EXPECT_EQ(actual.scaleYMode, expected.scaleYMode);
    EXPECT_EQ(actual.enabled, expected.enabled);
    EXPECT_EQ(actual.inverted, expected.inverted);
    EXPECT_EQ(actual.propagationId, expected.propagationId);
}

FilterRule fromJsonText(const char* text)
{
    return filterRuleFromJson(QJsonDocument::fromJson(QByteArray(text)).object());
}

} // namespace

TEST(FilterRuleJson, EveryFieldSurvivesTheTripThroughText)
{
    const FilterRule rule = everyFieldSet();
    const QByteArray text = QJsonDocument(filterRuleToJson(rule)).toJson();
    expectSameRule(filterRuleFromJson(QJsonDocument::fromJson(text).object()), rule);

    FilterRule range = rule;
    range.type = RangeRule;
    expectSameRule(
        filterRuleFromJson(QJsonDocument::fromJson(QJsonDocument(filterRuleToJson(range)).toJson()).object()),
        range);
}

TEST(FilterRuleJson, ARangeRuleIsWrittenWithEveryKey)
{
    FilterRule rule;
    rule.featureName = "deform";
    rule.minValue = 0.01;
    rule.maxValue = 0.2;
    const QJsonObject object = filterRuleToJson(rule);
    EXPECT_EQ(object.keys(),
        (QStringList { "enabled", "featureName", "featureNameY", "inverted", "maxValue", "minValue",
            "polygonVertices", "propagationId", "scaleXMode", "scaleYMode", "type" }));
    EXPECT_EQ(object.value("type").toString(), "Range");
    EXPECT_TRUE(object.value("polygonVertices").isArray());
    EXPECT_TRUE(object.value("polygonVertices").toArray().isEmpty());
    EXPECT_EQ(object.value("featureNameY").toString(), "");
    EXPECT_EQ(object.value("scaleXMode").toInt(-1), 0);
    EXPECT_EQ(filterRuleToJson(everyFieldSet()).value("type").toString(), "Polygon");
    EXPECT_EQ(filterRuleToJson(everyFieldSet()).value("polygonVertices").toArray().at(1).toArray(),
        (QJsonArray { 200.25, 0.02 }));
}

TEST(FilterRuleJson, MissingKeysAndWrongTypesReadAsTheDefaults)
{
    const FilterRule defaults;
    for (const char* text : { "{}",
             R"({"type": 1, "featureName": 5, "featureNameY": [], "minValue": "3", "maxValue": true,
                 "enabled": "no", "inverted": 1, "propagationId": {}, "polygonVertices": "none",
                 "scaleXMode": "1", "scaleYMode": null, "extra": 42})" }) {
        SCOPED_TRACE(text);
        expectSameRule(fromJsonText(text), defaults);
    }
    // Anything but "Polygon" is a range rule, even with vertices, which it keeps.
    for (const char* type : { "Range", "polygon", "POLYGON", "" }) {
        const FilterRule rule
            = fromJsonText(QString(R"({"type": "%1", "polygonVertices": [[1, 2], [3, 4], [5, 6]]})")
                               .arg(type)
                               .toUtf8()
                               .constData());
        EXPECT_EQ(rule.type, RangeRule) << type;
        EXPECT_EQ(rule.polygonVertices.size(), 3u) << type;
    }
    EXPECT_EQ(fromJsonText(R"({"type": "Polygon"})").type, PolygonRule);
}

TEST(FilterRuleJson, AVertexNeedsTwoNumbers)
{
    const struct
    {
        const char* vertices;
        std::vector<PlanePoint> expected;
    } cases[] = {
        { "[[1.0]]", {} },
        { "[[1.0, 2.0, 3.0]]", { { 1.0, 2.0 } } },
        { "[[]]", {} },
        { R"([[1.0, "2"]])", {} },
        { "[[null, 1.0]]", {} },
        { "[5, {\"x\": 1, \"y\": 2}, \"1,2\"]", {} },
        { "[[1, 2], [3], [-4.5, 6e2]]", { { 1.0, 2.0 }, { -4.5, 600.0 } } },
    };
    for (const auto& c : cases) {
        const QByteArray text = QByteArray(R"({"type": "Polygon", "polygonVertices": )") + c.vertices + "}";
        EXPECT_EQ(fromJsonText(text.constData()).polygonVertices, c.expected) << c.vertices;
    }
}
