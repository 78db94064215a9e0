#include "ui/DatasetFolderTree.h"

#include <QFileInfo>
#include <QHash>
#include <algorithm>
#include <functional>

namespace Tessaly {

namespace {

struct FolderRecord
{
    QString name;
    QString parentPrefix;
    int level = 0;
    // Highest segment count of any path through this folder.
    int deepest = 0;
};

// The tree is gathered with indices first, since nodes that hold vectors of nodes move while the
// vectors grow.
struct FlatNode
{
    QString label;
    int datasetIndex = -1;
    std::vector<int> children;
};

QStringList folderSegments(const QString& path)
{
    if (path.isEmpty() || !QFileInfo(path).isAbsolute())
        return {};
    return QFileInfo(path).absolutePath().split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

DatasetFolderNode toNode(const std::vector<FlatNode>& flat, int index)
{
    DatasetFolderNode node;
    node.label = flat[static_cast<std::size_t>(index)].label;
    node.datasetIndex = flat[static_cast<std::size_t>(index)].datasetIndex;
    for (int child : flat[static_cast<std::size_t>(index)].children)
        node.children.push_back(toNode(flat, child));
    return node;
}

} // namespace

std::vector<DatasetFolderNode> buildDatasetFolderTree(const QStringList& filePaths, int depth)
{
    std::vector<QStringList> segmentsOfFile;
    QHash<QString, FolderRecord> records;
    for (const QString& path : filePaths) {
        const QStringList segments = folderSegments(path);
        segmentsOfFile.push_back(segments);
        QString prefix;
        for (int i = 0; i < segments.size(); ++i) {
            const QString parent = prefix;
            prefix = i == 0 ? segments[i] : prefix + QLatin1Char('/') + segments[i];
            FolderRecord& record = records[prefix];
            record.name = segments[i];
            record.parentPrefix = parent;
            record.level = i + 1;
            record.deepest = std::max(record.deepest, static_cast<int>(segments.size()));
        }
    }
    const auto shown = [&records, depth](const QString& prefix) {
        const FolderRecord& record = records[prefix];
        return record.deepest - record.level + 1 <= depth;
    };

    std::vector<FlatNode> flat;
    std::vector<int> topLevel;
    QHash<QString, int> folderNodes;
    // A shown folder gets its node on first need, hung under its parent if that is shown too.
    std::function<int(const QString&)> folderNode = [&](const QString& prefix) {
        const auto found = folderNodes.constFind(prefix);
        if (found != folderNodes.constEnd())
            return *found;
        const FolderRecord record = records[prefix];
        const bool underParent = !record.parentPrefix.isEmpty() && shown(record.parentPrefix);
        const int parent = underParent ? folderNode(record.parentPrefix) : -1;
        flat.push_back({ record.name, -1, {} });
        const int index = static_cast<int>(flat.size()) - 1;
        folderNodes.insert(prefix, index);
        if (parent >= 0)
            flat[static_cast<std::size_t>(parent)].children.push_back(index);
        else
            topLevel.push_back(index);
        return index;
    };

    for (int file = 0; file < filePaths.size(); ++file) {
        const QStringList& segments = segmentsOfFile[static_cast<std::size_t>(file)];
        const QString folder = segments.join(QLatin1Char('/'));
        const int parent = !segments.isEmpty() && shown(folder) ? folderNode(folder) : -1;
        flat.push_back({ QString(), file, {} });
        const int index = static_cast<int>(flat.size()) - 1;
        if (parent >= 0)
            flat[static_cast<std::size_t>(parent)].children.push_back(index);
        else
            topLevel.push_back(index);
    }

    std::vector<DatasetFolderNode> result;
    for (int index : topLevel)
        result.push_back(toNode(flat, index));
    return result;
}

} // namespace Tessaly
