#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <gtest/gtest.h>

namespace Tessaly::Testing {

// Writes an executable shell script at `path` that runs `body`, for tests that put a program of
// their own in place of a helper the code under test starts (one that crashes, hangs, or says
// nothing). Returns the path.
inline QString writeStandInProgram(const QString& path, const QByteArray& body)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write("#!/bin/sh\n" + body);
    file.close();
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

} // namespace Tessaly::Testing
