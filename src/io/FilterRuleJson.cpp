#include "io/FilterRuleJson.h"

#include <QJsonArray>
#include <QJsonValue>

namespace Tessaly {

namespace {

namespace Keys {
const QString type = QStringLiteral("type");
const QString featureName = QStringLiteral("featureName");
const QString featureNameY = QStringLiteral("featureNameY");
const QString minValue = QStringLiteral("minValue");
const QString maxValue = QStringLiteral("maxValue");
const QString enabled = QStringLiteral("enabled");
const QString inverted = QStringLiteral("inverted");
const QString propagationId = QStringLiteral("propagationId");
const QString polygonVertices = QStringLiteral("polygonVertices");
const QString scaleXMode = QStringLiteral("scaleXMode");
const QString scaleYMode = QStringLiteral("scaleYMode");
const QString polygonType = QStringLiteral("Polygon");
const QString rangeType = QStringLiteral("Range");
} // namespace Keys

std::string stringOf(const QJsonObject& object, const QString& key)
{
    return object.value(key).toString().toStdString();
}

// A number that JSON can't hold (NaN, infinity) is written as null and so reads back as the default.
double doubleOf(const QJsonObject& object, const QString& key)
{
    return object.value(key).toDouble(0.0);
}

bool boolOf(const QJsonObject& object, const QString& key, bool fallback)
{
    return object.value(key).toBool(fallback);
}

std::vector<PlanePoint> verticesOf(const QJsonObject& object)
{
    std::vector<PlanePoint> vertices;
    const QJsonArray entries = object.value(Keys::polygonVertices).toArray();
    for (const QJsonValue& entry : entries) {
        double coordinates[2];
        int found = 0;
        const QJsonArray numbers = entry.toArray();
        for (const QJsonValue& number : numbers) {
            if (!number.isDouble())
                continue;
            coordinates[found++] = number.toDouble();
            if (found == 2)
                break;
        }
        if (found == 2)
            vertices.emplace_back(coordinates[0], coordinates[1]);
    }
    return vertices;
}

} // namespace

QJsonObject filterRuleToJson(const FilterRule& rule)
{
    QJsonArray vertices;
    for (const PlanePoint& vertex : rule.polygonVertices)
        vertices.append(QJsonArray { vertex.first, vertex.second });
    QJsonObject object;
    object.insert(Keys::type, rule.type == PolygonRule ? Keys::polygonType : Keys::rangeType);
    object.insert(Keys::featureName, QString::fromStdString(rule.featureName));
    object.insert(Keys::featureNameY, QString::fromStdString(rule.featureNameY));
    object.insert(Keys::minValue, rule.minValue);
    object.insert(Keys::maxValue, rule.maxValue);
    object.insert(Keys::enabled, rule.enabled);
    object.insert(Keys::inverted, rule.inverted);
    object.insert(Keys::propagationId, QString::fromStdString(rule.propagationId));
    object.insert(Keys::polygonVertices, vertices);
    object.insert(Keys::scaleXMode, rule.scaleXMode);
    object.insert(Keys::scaleYMode, rule.scaleYMode);
    return object;
}

FilterRule filterRuleFromJson(const QJsonObject& object)
{
    FilterRule rule;
    rule.type = object.value(Keys::type).toString() == Keys::polygonType ? PolygonRule : RangeRule;
    rule.featureName = stringOf(object, Keys::featureName);
    rule.featureNameY = stringOf(object, Keys::featureNameY);
    rule.minValue = doubleOf(object, Keys::minValue);
    rule.maxValue = doubleOf(object, Keys::maxValue);
    rule.enabled = boolOf(object, Keys::enabled, true);
    rule.inverted = boolOf(object, Keys::inverted, false);
    rule.propagationId = stringOf(object, Keys::propagationId);
    rule.polygonVertices = verticesOf(object);
    rule.scaleXMode = object.value(Keys::scaleXMode).toInt(0);
    rule.scaleYMode = object.value(Keys::scaleYMode).toInt(0);
    return rule;
}

} // namespace Tessaly
