#pragma once

#include "support/FixtureWriter.h"

#include <H5Cpp.h>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace Tessaly::Testing {

// Tests that build measurement files in a temporary folder, removed afterwards.
class IoTest : public ::testing::Test
{
protected:
    // The program switches the library's own error printing off at start-up; tests do the same, so
    // that the standard error stream holds only the reader's lines.
    static void SetUpTestSuite() { H5::Exception::dontPrint(); }

    std::string pathFor(const std::string& fileName) const
    {
        return m_folder.filePath(QString::fromStdString(fileName)).toStdString();
    }

    QTemporaryDir m_folder;
};

} // namespace Tessaly::Testing
