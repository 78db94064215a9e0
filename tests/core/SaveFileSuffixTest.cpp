#include "core/SaveFileSuffix.h"

#include <gtest/gtest.h>

using Tessaly::withFilterSuffix;

namespace {
const QString imageFilters = "PNG Images (*.png);;JPEG Images (*.jpg);;All Files (*)";
}

TEST(SaveFileSuffix, AddsTheFirstPatternOfTheChosenFilterToANameWithoutSuffix)
{
    EXPECT_EQ(withFilterSuffix("/tmp/event", "PNG Images (*.png)"), "/tmp/event.png");
    EXPECT_EQ(withFilterSuffix("/tmp/event", "JPEG Images (*.jpg *.jpeg)"), "/tmp/event.jpg");
    // The whole list, as some platforms hand it back, gives the first filter's suffix.
    EXPECT_EQ(withFilterSuffix("/tmp/event", imageFilters), "/tmp/event.png");
    // A dot in a folder name is not the file's suffix.
    EXPECT_EQ(withFilterSuffix("/tmp/run.2/event", "Tab-separated values (*.tsv)"), "/tmp/run.2/event.tsv");
}

TEST(SaveFileSuffix, KeepsNamesWithASuffixAndFiltersWithoutOne)
{
    EXPECT_EQ(withFilterSuffix("/tmp/event.jpg", "PNG Images (*.png)"), "/tmp/event.jpg");
    EXPECT_EQ(withFilterSuffix("/tmp/event", "All Files (*)"), "/tmp/event");
    EXPECT_EQ(withFilterSuffix("/tmp/event", ""), "/tmp/event");
    EXPECT_EQ(withFilterSuffix("", "PNG Images (*.png)"), "");
}
