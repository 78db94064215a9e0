#include "io/FilterGroupFile.h"

#include "io/FilterRuleJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace Tessaly {

namespace {
const QString versionKey = QStringLiteral("formatVersion");
const QString groupsKey = QStringLiteral("groups");
const QString nameKey = QStringLiteral("name");
const QString rulesKey = QStringLiteral("rules");
const QString notAnObjectText = QStringLiteral("the document is not a JSON object");
} // namespace

QByteArray writeFilterGroupsDocument(const std::vector<const FilterGroup*>& groups)
{
    QJsonArray groupArray;
    for (const FilterGroup* group : groups) {
        if (!group)
            continue;
        QJsonArray rules;
        for (const FilterRule& rule : group->rules)
            rules.append(filterRuleToJson(rule));
        QJsonObject object;
        object.insert(nameKey, QString::fromStdString(group->name));
        object.insert(rulesKey, rules);
        groupArray.append(object);
    }
    QJsonObject root;
    root.insert(versionKey, filterGroupFileVersion);
    root.insert(groupsKey, groupArray);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool readFilterGroupsDocument(const QByteArray& bytes, std::vector<FilterGroup>* groups, QString* error)
{
    groups->clear();
    QJsonParseError parseError {};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = parseError.errorString();
        return false;
    }
    if (!document.isObject()) {
        *error = notAnObjectText;
        return false;
    }
    const QJsonArray groupArray = document.object().value(groupsKey).toArray();
    for (const QJsonValue& groupValue : groupArray) {
        if (!groupValue.isObject())
            continue;
        const QJsonObject object = groupValue.toObject();
        FilterGroup group;
        group.name = object.value(nameKey).toString().toStdString();
        const QJsonArray rules = object.value(rulesKey).toArray();
        for (const QJsonValue& rule : rules) {
            if (rule.isObject())
                group.rules.push_back(filterRuleFromJson(rule.toObject()));
        }
        groups->push_back(std::move(group));
    }
    return true;
}

} // namespace Tessaly
