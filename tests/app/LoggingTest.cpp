#include "app/Logging.h"

#include "support/MessageCapture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <vector>

using namespace Tessaly;
using Tessaly::Testing::MessageCapture;

namespace {

const QRegularExpression lineFormat(QStringLiteral(
    R"(^\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}Z \[(DEBUG|INFO |WARN |ERROR|FATAL|\?{5})\] (.*)$)"));

// Every test runs in a fresh working directory with a fresh log. Messages that the log passes on to
// the earlier handler end up in `passedOn` instead of on the console.
class LoggingTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(workDir.isValid());
        previousDir = QDir::currentPath();
        ASSERT_TRUE(QDir::setCurrent(workDir.path()));
        resetLogging();
        passedOn = std::make_unique<MessageCapture>();
    }

    void TearDown() override
    {
        resetLogging();
        passedOn.reset();
        QDir::setCurrent(previousDir);
    }

    // An old log whose modification time lies `hoursAgo` in the past.
    void makeOldLog(const QString& name, int hoursAgo)
    {
        QFile file(workDir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.close();
        setAge(name, hoursAgo);
    }

    void setAge(const QString& name, int hoursAgo)
    {
        namespace fs = std::filesystem;
        fs::last_write_time(fs::path(workDir.filePath(name).toStdString()),
            fs::file_time_type::clock::now() - std::chrono::hours(hoursAgo));
    }

    QStringList logFiles() const
    {
        return QDir(workDir.path())
            .entryList({ QStringLiteral("Tessaly_log_*.txt") }, QDir::Files, QDir::Name);
    }

    static QStringList fileLines(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return {};
        return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    static QStringList ringLines() { return recentLogText().split(QLatin1Char('\n'), Qt::SkipEmptyParts); }

    static void log(QtMsgType type, const QString& message)
    {
        logMessageHandler(type, QMessageLogContext(), message);
    }

    QTemporaryDir workDir;
    QString previousDir;
    std::unique_ptr<MessageCapture> passedOn;
};

TEST_F(LoggingTest, KeepsTheTenNewestOldLogsByModificationTime)
{
    // Ages do not follow the names, so only an order by time finds the two oldest.
    const std::vector<int> ageInHours = { 5, 11, 2, 9, 12, 1, 7, 3, 10, 6, 4, 8 };
    QStringList oldest;
    for (size_t i = 0; i < ageInHours.size(); ++i) {
        const QString name
            = QStringLiteral("Tessaly_log_20200101_0000%1.txt").arg(i, 2, 10, QLatin1Char('0'));
        makeOldLog(name, ageInHours[i]);
        if (ageInHours[i] >= 11)
            oldest << name;
    }
    // Neither a folder that matches the pattern nor other files count as logs.
    ASSERT_TRUE(QDir(workDir.path()).mkdir(QStringLiteral("Tessaly_log_folder.txt")));
    setAge(QStringLiteral("Tessaly_log_folder.txt"), 0);
    makeOldLog(QStringLiteral("notes.txt"), 100);

    initLogging();

    const QStringList remaining = logFiles();
    EXPECT_EQ(remaining.size(), 11) << remaining.join(QLatin1Char(' ')).toStdString();
    for (const QString& name : oldest)
        EXPECT_FALSE(remaining.contains(name)) << name.toStdString();
    EXPECT_TRUE(remaining.contains(QFileInfo(logFilePath()).fileName()));
    EXPECT_TRUE(QFileInfo::exists(workDir.filePath(QStringLiteral("Tessaly_log_folder.txt"))));
    EXPECT_TRUE(QFileInfo::exists(workDir.filePath(QStringLiteral("notes.txt"))));
}

TEST_F(LoggingTest, KeepsAllOfExactlyTenOldLogs)
{
    for (int i = 0; i < 10; ++i)
        makeOldLog(QStringLiteral("Tessaly_log_20200101_0000%1.txt").arg(i, 2, 10, QLatin1Char('0')), i + 1);

    initLogging();

    EXPECT_EQ(logFiles().size(), 11);
}

TEST_F(LoggingTest, WritesEveryLineToThisRunsFileInTheWorkingDirectory)
{
    initLogging();
    qWarning("first warning");
    log(QtCriticalMsg, QStringLiteral("a failure"));

    const QFileInfo file(logFilePath());
    EXPECT_EQ(file.absolutePath(), QFileInfo(workDir.path()).absoluteFilePath());
    EXPECT_TRUE(QRegularExpression(QStringLiteral(R"(^Tessaly_log_\d{8}_\d{6}\.txt$)"))
                    .match(file.fileName())
                    .hasMatch())
        << file.fileName().toStdString();

    const QStringList lines = fileLines(file.absoluteFilePath());
    ASSERT_EQ(lines.size(), 3) << lines.join(QLatin1Char('\n')).toStdString();
    const QRegularExpressionMatch start = lineFormat.match(lines[0]);
    ASSERT_TRUE(start.hasMatch()) << lines[0].toStdString();
    EXPECT_EQ(start.captured(1), QStringLiteral("INFO "));
    EXPECT_TRUE(QRegularExpression(
        QStringLiteral(R"(^Tessaly session started \d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}Z$)"))
                    .match(start.captured(2))
                    .hasMatch())
        << start.captured(2).toStdString();
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral(" [WARN ] first warning"))) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].endsWith(QStringLiteral(" [ERROR] a failure"))) << lines[2].toStdString();
    EXPECT_EQ(ringLines(), lines);
}

TEST_F(LoggingTest, LevelWordsAreFiveCharactersWide)
{
    const struct
    {
        QtMsgType type;
        const char* word;
    } cases[] = {
        { QtDebugMsg, "DEBUG" },
        { QtWarningMsg, "WARN " },
        { QtCriticalMsg, "ERROR" },
        { QtFatalMsg, "FATAL" },
        { QtInfoMsg, "INFO " },
        // A level without a name; it stays within the values the type can hold (0 to 7), since
        // any other value is undefined behaviour before the handler even sees it.
        { static_cast<QtMsgType>(7), "?????" },
    };
    for (const auto& c : cases)
        log(c.type, QStringLiteral("message"));

    const QStringList lines = ringLines();
    ASSERT_EQ(lines.size(), static_cast<int>(std::size(cases)));
    for (int i = 0; i < lines.size(); ++i) {
        const QRegularExpressionMatch match = lineFormat.match(lines[i]);
        ASSERT_TRUE(match.hasMatch()) << lines[i].toStdString();
        EXPECT_EQ(match.captured(1), QString::fromLatin1(cases[i].word));
        EXPECT_EQ(match.captured(2), QStringLiteral("message"));
    }
}

TEST_F(LoggingTest, RingKeepsTheNewestLinesEachEndingInANewline)
{
    for (int i = 0; i < logRingCapacity + 150; ++i)
        log(QtInfoMsg, QStringLiteral("line %1").arg(i));

    const QString text = recentLogText();
    EXPECT_TRUE(text.endsWith(QLatin1Char('\n')));
    EXPECT_EQ(text.count(QLatin1Char('\n')), logRingCapacity);
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), logRingCapacity);
    EXPECT_TRUE(lines.front().endsWith(QStringLiteral("] line 150"))) << lines.front().toStdString();
    EXPECT_TRUE(lines.back().endsWith(QStringLiteral("] line 2149"))) << lines.back().toStdString();
}

TEST_F(LoggingTest, PassesMessagesOnToTheEarlierHandlerEvenAfterASecondStart)
{
    initLogging();
    initLogging();
    passedOn->clear();

    qWarning("passed on once");

    ASSERT_EQ(passedOn->messages().size(), 1);
    EXPECT_TRUE(passedOn->contains(QtWarningMsg, QStringLiteral("passed on once")));

    resetLogging();
    qWarning("after reset");
    EXPECT_FALSE(recentLogText().contains(QStringLiteral("after reset")));
}

TEST_F(LoggingTest, KeepsLinesInTheRingWhenTheFileCannotBeOpened)
{
    initLogging();
    const QString path = logFilePath();
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir().mkdir(path));

    qWarning("nowhere to write");

    EXPECT_TRUE(recentLogText().contains(QStringLiteral("[WARN ] nowhere to write")));
}

TEST_F(LoggingTest, LinesFromManyThreadsAreNeitherLostNorMixed)
{
    initLogging();
    constexpr int threads = 4;
    constexpr int linesPerThread = 300;
    std::vector<std::unique_ptr<QThread>> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back(QThread::create([t] {
            for (int i = 0; i < linesPerThread; ++i)
                qInfo("thread %d line %d", t, i);
        }));
        workers.back()->start();
    }
    for (auto& worker : workers)
        ASSERT_TRUE(worker->wait(30000));

    const QStringList lines = fileLines(logFilePath());
    ASSERT_EQ(lines.size(), 1 + threads * linesPerThread);
    for (const QString& line : lines)
        ASSERT_TRUE(lineFormat.match(line).hasMatch()) << line.toStdString();
    EXPECT_EQ(ringLines().size(), 1 + threads * linesPerThread);
    EXPECT_EQ(passedOn->messages().size(), 1 + threads * linesPerThread);
}

} // namespace
