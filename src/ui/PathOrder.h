#pragma once

#include <QString>
#include <QStringList>

namespace Tessaly {

// Orders paths folder by folder: both are split at "/" (empty parts dropped) and compared part by
// part, case-insensitively; a path that runs out of parts first goes first. The files of a folder
// thus come in folder order: "/d/a/x.vqd" precedes "/d/a-b/y.vqd", though "-" sorts before "/" in a
// plain comparison of the whole text.
bool pathLessThan(const QString& a, const QString& b);

void sortPaths(QStringList& paths);

} // namespace Tessaly
