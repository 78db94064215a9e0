#include "ui/DatasetFolderTree.h"

#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

// The tree as text: folders by label, datasets by row, children in brackets.
QString describe(const std::vector<DatasetFolderNode>& nodes)
{
    QStringList parts;
    for (const DatasetFolderNode& node : nodes) {
        QString text = node.datasetIndex >= 0 ? QString::number(node.datasetIndex) : node.label;
        if (!node.children.empty())
            text += "[" + describe(node.children) + "]";
        parts << text;
    }
    return parts.join(' ');
}

} // namespace

TEST(DatasetFolderTree, DepthCountsFolderLevelsUpFromTheDeepest)
{
    const QStringList paths = { "/a/b/c/one.vqd", "/a/b/d/two.vqd" };
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 1)), "c[0] d[1]");
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 2)), "b[c[0] d[1]]");
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 3)), "a[b[c[0] d[1]]]");
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 4)), "a[b[c[0] d[1]]]");
}

TEST(DatasetFolderTree, FilesAboveTheShownLevelsGoToTheTop)
{
    // /a/b lies two levels above the deepest folder /a/b/c.
    const QStringList paths = { "/a/b/x.vqd", "/a/b/c/y.vqd" };
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 1)), "0 c[1]");
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 2)), "b[0 c[1]]");
}

TEST(DatasetFolderTree, KeepsFirstAppearanceAndSeparatesBranches)
{
    const QStringList paths = { "/x/q/1.vqd", "/y/p/2.vqd", "/x/q/3.vqd", "relative.vqd", "" };
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 1)), "q[0 2] p[1] 3 4");
    EXPECT_EQ(describe(buildDatasetFolderTree(paths, 2)), "x[q[0 2]] y[p[1]] 3 4");
    EXPECT_TRUE(buildDatasetFolderTree({}, 2).empty());
}
