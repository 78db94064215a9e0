#include "app/Theme.h"

#include "support/MessageCapture.h"

#include <QFile>
#include <QImage>
#include <QPushButton>
#include <QRegularExpression>
#include <QResource>
#include <QSvgRenderer>
#include <gtest/gtest.h>

using namespace Tessaly;
using Tessaly::Testing::MessageCapture;

namespace {

TEST(ThemeTest, PaletteGivesEveryRoleItsColourAndGreysDisabledText)
{
    const QPalette palette = applicationPalette();
    const struct
    {
        QPalette::ColorRole role;
        QColor colour;
    } allGroups[] = {
        { QPalette::Window, QColor(245, 246, 248) },
        { QPalette::Base, QColor(255, 255, 255) },
        { QPalette::HighlightedText, QColor(255, 255, 255) },
        { QPalette::ToolTipBase, QColor(255, 255, 255) },
        { QPalette::Light, QColor(255, 255, 255) },
        { QPalette::ToolTipText, QColor(35, 38, 46) },
        { QPalette::AlternateBase, QColor(240, 242, 245) },
        { QPalette::Button, QColor(238, 240, 243) },
        { QPalette::BrightText, QColor(210, 60, 60) },
        { QPalette::Link, QColor(0, 171, 173) },
        { QPalette::Highlight, QColor(0, 171, 173) },
        { QPalette::Midlight, QColor(235, 237, 240) },
        { QPalette::Mid, QColor(200, 203, 208) },
        { QPalette::Dark, QColor(160, 164, 170) },
        { QPalette::Shadow, QColor(120, 124, 130) },
    };
    for (QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled })
        for (const auto& entry : allGroups)
            EXPECT_EQ(palette.color(group, entry.role), entry.colour)
                << "group " << group << ", role " << entry.role;

    for (QPalette::ColorRole role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText }) {
        EXPECT_EQ(palette.color(QPalette::Active, role), QColor(35, 38, 46)) << "role " << role;
        EXPECT_EQ(palette.color(QPalette::Inactive, role), QColor(35, 38, 46)) << "role " << role;
        EXPECT_EQ(palette.color(QPalette::Disabled, role), QColor(160, 164, 170)) << "role " << role;
    }
}

// Qt reports a sheet it cannot parse with a warning when a widget using it is polished.
bool sheetParses(const QString& sheet)
{
    MessageCapture log;
    QPushButton widget;
    widget.setStyleSheet(sheet);
    widget.ensurePolished();
    return !log.containsText(QStringLiteral("Could not parse"));
}

TEST(ThemeTest, StyleSheetsParse)
{
    ASSERT_FALSE(sheetParses(QStringLiteral("QPushButton { color: red; ")));
    EXPECT_TRUE(sheetParses(applicationStyleSheet()));
    EXPECT_TRUE(sheetParses(plainSelectorStyleSheet));
    EXPECT_TRUE(sheetParses(warningSelectorStyleSheet));
}

TEST(ThemeTest, ImagesOfTheStyleSheetAreInTheResources)
{
    const QString sheet = applicationStyleSheet();
    QStringList urls;
    QRegularExpressionMatchIterator it
        = QRegularExpression(QStringLiteral(R"(url\(([^)]*)\))")).globalMatch(sheet);
    while (it.hasNext())
        urls << it.next().captured(1);
    for (const char* expected : { ":/checkmark.svg", ":/arrow-up.svg", ":/arrow-down.svg" })
        EXPECT_TRUE(urls.contains(QString::fromLatin1(expected))) << expected;
    for (const QString& url : urls)
        EXPECT_TRUE(QFile::exists(url)) << url.toStdString();
}

TEST(ThemeTest, ResourcesAreStoredUncompressedAndLoad)
{
    for (const char* path : { ":/Logo_Orvane_rgb_randlos_keinText.png", ":/Logo_Orvane_rgb_randlos.png",
             ":/checkmark.svg", ":/arrow-up.svg", ":/arrow-down.svg" }) {
        const QResource resource(QString::fromLatin1(path));
        ASSERT_TRUE(resource.isValid()) << path;
        EXPECT_EQ(resource.compressionAlgorithm(), QResource::NoCompression) << path;
    }

    const QImage logo(QStringLiteral(":/Logo_Orvane_rgb_randlos.png"));
    EXPECT_EQ(logo.size(), QSize(1181, 265));
    const QImage emblem(QStringLiteral(":/Logo_Orvane_rgb_randlos_keinText.png"));
    ASSERT_FALSE(emblem.isNull());
    EXPECT_EQ(qAlpha(emblem.pixel(0, 0)), 0) << "the emblem's background is transparent";

    for (const char* path : { ":/checkmark.svg", ":/arrow-up.svg", ":/arrow-down.svg" }) {
        QSvgRenderer svg(QString::fromLatin1(path));
        ASSERT_TRUE(svg.isValid()) << path;
        EXPECT_EQ(svg.viewBoxF(), QRectF(0, 0, 16, 16)) << path;
    }
}

} // namespace
