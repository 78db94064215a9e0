#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace Tessaly {

// A node of the folder view of the datasets: a folder with its label, or a dataset (empty label)
// with its row.
struct DatasetFolderNode
{
    QString label;
    int datasetIndex = -1;
    std::vector<DatasetFolderNode> children;
};

// Groups files under the folders that hold them. `depth` is the number of folder levels shown,
// counted upward from the deepest folder of each branch; a file whose own folder lies further up
// than that goes to the top level. Top-level nodes and children keep the order of first appearance.
std::vector<DatasetFolderNode> buildDatasetFolderTree(const QStringList& filePaths, int depth);

} // namespace Tessaly
