#pragma once

#include "core/FilterRule.h"

#include <QJsonObject>

namespace Tessaly {

// A rule as the JSON object that filter group files and session files store. Every key is written,
// for range rules too, so that a file always shows the whole record.
QJsonObject filterRuleToJson(const FilterRule& rule);

// The rule that a JSON object describes. Missing keys and values of the wrong type take the
// defaults of a new rule; any "type" other than "Polygon" is a range rule. A vertex needs two
// numbers: shorter entries are dropped, longer ones keep their first two.
FilterRule filterRuleFromJson(const QJsonObject& object);

} // namespace Tessaly
