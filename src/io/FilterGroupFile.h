#pragma once

#include "core/FilterGroup.h"

#include <QByteArray>
#include <QString>
#include <vector>

namespace Tessaly {

inline constexpr int filterGroupFileVersion = 1;

// The document of a filter group file (".tsyfg"): "formatVersion" and "groups", each group with its
// "name" and "rules". Group ids and which datasets switch a group on are not part of it. Written as
// indented UTF-8 JSON.
QByteArray writeFilterGroupsDocument(const std::vector<const FilterGroup*>& groups);

// Reads the groups of a document in file order, with id -1 and the names as they stand (possibly
// empty). The version is not looked at. Entries of "groups" or "rules" that are no objects hold
// nothing and are passed over; a missing or malformed "groups" gives no groups. False, with the
// parser's reason in `error`, for text that is no JSON or a document that is no object.
bool readFilterGroupsDocument(const QByteArray& bytes, std::vector<FilterGroup>* groups, QString* error);

} // namespace Tessaly
