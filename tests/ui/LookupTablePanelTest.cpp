#include "ui/LookupTablePanel.h"

#include "DemoLookupTable.h"
#include "calc/EModulus.h"
#include "calc/LookupTableCheck.h"
#include "ui/MessageBoxes.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Tessaly;
namespace Texts = Tessaly::LookupTablePanelTexts;

namespace {

class LookupTablePanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        install = folder.filePath(QStringLiteral("install/data"));
        user = folder.filePath(QStringLiteral("user/data"));
        engine.setSearchFolders({ install, user });
        MessageBoxes::setInterceptor([this](MessageBoxes::Kind, const QString& title, const QString& text) {
            messages.push_back({ title, text });
            return QMessageBox::Ok;
        });
    }
    void TearDown() override { MessageBoxes::setInterceptor({}); }

    QString writeFile(const QString& name, const QByteArray& text)
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }

    QTemporaryDir folder;
    QString install, user;
    EModulus engine;
    std::vector<std::pair<QString, QString>> messages;
};

} // namespace

TEST_F(LookupTablePanelTest, WithoutTableSaysWhereItLookedAndOffersToChoose)
{
    testing::internal::CaptureStderr();
    LookupTablePanel panel(&engine);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(panel.statusText(),
        Texts::notFound.arg(EModulus::lutFileName,
            QDir::toNativeSeparators(install) + QStringLiteral("; ") + QDir::toNativeSeparators(user)));
    EXPECT_TRUE(panel.chooseOffered());
    EXPECT_TRUE(panel.metadataText().isEmpty());
}

TEST_F(LookupTablePanelTest, ChosenTableIsCheckedThenCopiedIntoTheUsersFolder)
{
    testing::internal::CaptureStderr();
    LookupTablePanel panel(&engine);
    QSignalSpy installed(&panel, &LookupTablePanel::tableInstalled);

    // Refused tables leave nothing behind and say why.
    const QString broken
        = writeFile(QStringLiteral("broken.txt"), "area deform emodulus\n10 0.01 1\n20 0.02 x\n");
    EXPECT_FALSE(panel.installTable(broken));
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].first, Texts::invalidTitle);
    EXPECT_EQ(messages[0].second,
        Texts::invalidText.arg(
            QDir::toNativeSeparators(broken), LookupTableTexts::badRow.arg(3).arg("20 0.02 x")));
    EXPECT_FALSE(QFile::exists(user + QStringLiteral("/LUT_LE_2D_FEM.txt")));
    EXPECT_EQ(installed.count(), 0);

    const QString demo = folder.filePath(QStringLiteral("demo.txt"));
    ASSERT_TRUE(ExampleData::writeDemoTable(demo.toStdString()));
    EXPECT_TRUE(panel.installTable(demo));
    EXPECT_EQ(installed.count(), 1);
    const QString target = user + QStringLiteral("/LUT_LE_2D_FEM.txt");
    QFile copied(target), original(demo);
    ASSERT_TRUE(copied.open(QIODevice::ReadOnly));
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    EXPECT_EQ(copied.readAll(), original.readAll());

    EXPECT_EQ(panel.statusText(), Texts::inUse.arg(QDir::toNativeSeparators(target)));
    EXPECT_TRUE(
        panel.metadataText().contains(QStringLiteral("demonstration table, not a finite-element result")));
    EXPECT_FALSE(panel.chooseOffered());
    ASSERT_NE(engine.lut(0), nullptr);
    EXPECT_EQ(engine.lut(0)->flowRate, 0.04);
}

TEST_F(LookupTablePanelTest, UnwritableUserFolderIsReported)
{
    // A file where the user's folder should be.
    QDir().mkpath(folder.filePath(QStringLiteral("user")));
    writeFile(QStringLiteral("user/data"), "in the way");
    testing::internal::CaptureStderr();
    LookupTablePanel panel(&engine);
    const QString demo = folder.filePath(QStringLiteral("demo.txt"));
    ASSERT_TRUE(ExampleData::writeDemoTable(demo.toStdString()));
    EXPECT_FALSE(panel.installTable(demo));
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].first, Texts::copyFailedTitle);
    EXPECT_TRUE(panel.chooseOffered());
}

TEST_F(LookupTablePanelTest, TableWithoutMetadataSaysWhichConditionsAreAssumed)
{
    QDir().mkpath(install);
    writeFile(QStringLiteral("install/data/LUT_LE_2D_FEM.txt"),
        "area deform emodulus\n10 0.01 1\n20 0.02 2\n10 0.03 3\n");
    LookupTablePanel panel(&engine);
    EXPECT_EQ(panel.statusText(),
        Texts::inUse.arg(QDir::toNativeSeparators(install + QStringLiteral("/LUT_LE_2D_FEM.txt"))));
    EXPECT_EQ(panel.metadataText(), Texts::noMetadata);
    EXPECT_FALSE(panel.chooseOffered());
}

TEST_F(LookupTablePanelTest, TableOfTooFewRowsIsNamedAsUnusable)
{
    QDir().mkpath(install);
    writeFile(
        QStringLiteral("install/data/LUT_LE_2D_FEM.txt"), "area deform emodulus\n10 0.01 1\n20 0.02 2\n");
    LookupTablePanel panel(&engine);
    EXPECT_EQ(panel.statusText(),
        Texts::unusable.arg(QDir::toNativeSeparators(install + QStringLiteral("/LUT_LE_2D_FEM.txt"))));
    EXPECT_FALSE(panel.chooseOffered());
}
