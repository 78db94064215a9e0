#include "MainWindowFixture.h"

#include "ExampleEvents.h"
#include "ExampleFileWriter.h"
#include "support/FixtureWriter.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QSettings>
#include <QTest>

namespace Tessaly::Testing {

void MainWindowFixture::SetUp()
{
    QSettings().clear();
    MessageBoxes::setInterceptor([this](MessageBoxes::Kind kind, const QString& title, const QString& text) {
        messages.push_back({ kind, title, text });
        return answer;
    });
}

void MainWindowFixture::TearDown()
{
    // A preload still running holds its own reference to the reader; waiting keeps the files of
    // the temporary folder unused when it is removed.
    if (window)
        waitUntilIdle();
    window.reset();
    MessageBoxes::setInterceptor({});
    QSettings().clear();
}

MainWindow& MainWindowFixture::makeWindow()
{
    window = std::make_unique<MainWindow>();
    return *window;
}

void MainWindowFixture::settleRefresh()
{
    for (int turn = 0; turn < 10 && window && window->isRefreshQueued(); ++turn)
        QCoreApplication::sendPostedEvents(window.get(), QEvent::MetaCall);
    EXPECT_FALSE(window && window->isRefreshQueued());
}

QString MainWindowFixture::writeDataset(
    const QString& relativePath, const QString& sample, std::size_t events, bool withImages)
{
    const QString path = folder.filePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    ExampleData::ExampleSettings settings;
    settings.eventCount = events;
    settings.sample = sample.toStdString();
    ExampleData::WriteOptions options;
    options.images = withImages;
    options.traces = withImages;
    EXPECT_TRUE(ExampleData::writeExampleFile(
        path.toStdString(), settings, ExampleData::generateEvents(settings), options));
    return path;
}

QString MainWindowFixture::writeForeignFile(const QString& relativePath)
{
    const QString path = folder.filePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    FixtureWriter(path.toStdString())
        .column<double>("deform", { 0.01, 0.02 })
        .stringAttribute("setup:module composition", "Other instrument")
        .close();
    return path;
}

QString MainWindowFixture::writeTextFile(const QString& relativePath, const QByteArray& content)
{
    const QString path = folder.filePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

void MainWindowFixture::drop(const QList<QUrl>& urls)
{
    QMimeData data;
    data.setUrls(urls);
    // A drop reaches the widget that accepted the drag's entry.
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &enter);
    QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &event);
}

bool MainWindowFixture::waitUntilIdle(int timeoutMs)
{
    return QTest::qWaitFor(
        [this] {
            if (window->isPreloadRunning() || window->isCheckingFile())
                return false;
            for (const DatasetEntry* entry : window->datasets()) {
                if (!entry->featuresLoaded)
                    return false;
            }
            return true;
        },
        timeoutMs);
}

std::vector<std::string> MainWindowFixture::datasetPaths() const
{
    std::vector<std::string> paths;
    for (const DatasetEntry* entry : window->datasets())
        paths.push_back(entry->filePath);
    return paths;
}

} // namespace Tessaly::Testing
