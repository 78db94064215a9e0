#pragma once

#include "core/DatasetEntry.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QList>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace Tessaly::Testing {

// A main window on the offscreen platform with its message boxes answered by the test, and a
// folder of measurement files made for the test.
class MainWindowFixture : public ::testing::Test
{
protected:
    struct Message
    {
        MessageBoxes::Kind kind;
        QString title;
        QString text;
    };

    void SetUp() override;
    void TearDown() override;

    // A fresh window; the settings are those the test has put in place before.
    MainWindow& makeWindow();

    // An instrument file below the test folder, with `events` events and the sample name given.
    QString writeDataset(const QString& relativePath, const QString& sample = QStringLiteral("Sample"),
        std::size_t events = 120, bool withImages = false);
    // A valid HDF5 file whose metadata names no instrument of ours.
    QString writeForeignFile(const QString& relativePath);
    // Any file with the given text content.
    QString writeTextFile(const QString& relativePath, const QByteArray& content = "not a measurement");

    void drop(const QList<QUrl>& urls);
    // Waits until no preload runs and nothing is queued. Generous: under the thread sanitizer each
    // file check starts several instrumented probe processes, which takes seconds apiece on a
    // loaded machine.
    bool waitUntilIdle(int timeoutMs = 120000);
    // Runs the refresh that edits in the filter dock have asked for, which waits for the event loop.
    void settleRefresh();
    std::vector<std::string> datasetPaths() const;

    QTemporaryDir folder;
    std::unique_ptr<MainWindow> window;
    std::vector<Message> messages;
    QMessageBox::StandardButton answer = QMessageBox::Ok;
};

} // namespace Tessaly::Testing
