#include "plot/ImageViewer.h"

#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

using namespace Tessaly;
namespace Text = Tessaly::ImageViewerText;

namespace {

// A viewer whose dialogs and menu answer from the test instead of a user.
class ScriptedViewer : public ImageViewer
{
public:
    struct Message
    {
        QMessageBox::Icon icon;
        QString title;
        QString text;
    };

    QString answerFileName;
    QString answerFilter;
    int dialogsAsked = 0;
    QString dialogTitle;
    QString dialogFilters;
    std::vector<Message> messages;
    int menusShown = 0;
    QStringList menuEntries;
    bool triggerFirstEntry = false;

protected:
    QString askSaveFileName(const QString& title, const QString& filters, QString* selectedFilter) override
    {
        ++dialogsAsked;
        dialogTitle = title;
        dialogFilters = filters;
        *selectedFilter = answerFilter;
        return answerFileName;
    }
    void showMessage(QMessageBox::Icon icon, const QString& title, const QString& text) override
    {
        messages.push_back({ icon, title, text });
    }
    void execContextMenu(QMenu& menu, const QPoint&) override
    {
        ++menusShown;
        for (QAction* action : menu.actions())
            menuEntries << action->text();
        if (triggerFirstEntry && !menu.actions().isEmpty())
            menu.actions().front()->trigger();
    }
};

QPixmap shownPixmap(const ImageViewer& viewer)
{
    const auto* label = viewer.findChild<QLabel*>("imageLabel");
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return label->pixmap();
#else
    return label->pixmap(Qt::ReturnByValue);
#endif
}

QString infoText(const ImageViewer& viewer)
{
    return viewer.findChild<QLabel*>("infoLabel")->text();
}

QCheckBox* checkBox(const ImageViewer& viewer, const char* text)
{
    for (QCheckBox* box : viewer.findChildren<QCheckBox*>())
        if (box->text() == QString::fromUtf8(text))
            return box;
    return nullptr;
}

QPushButton* button(const ImageViewer& viewer, const char* text)
{
    for (QPushButton* candidate : viewer.findChildren<QPushButton*>())
        if (candidate->text() == QString::fromUtf8(text))
            return candidate;
    return nullptr;
}

// A frame wider than high, 5 x 3, so that swapped sizes show: row r, column c holds 40 + 20 r + 10 c,
// from 40 at the top left to 120 at the bottom right.
constexpr int frameWidth = 5;
constexpr int frameHeight = 3;
std::vector<std::uint8_t> frame()
{
    std::vector<std::uint8_t> pixels;
    for (int r = 0; r < frameHeight; ++r)
        for (int c = 0; c < frameWidth; ++c)
            pixels.push_back(static_cast<std::uint8_t>(40 + 20 * r + 10 * c));
    return pixels;
}

// Inside: the middle row, columns 1 to 3.
std::vector<std::uint8_t> mask()
{
    std::vector<std::uint8_t> pixels(frameWidth * frameHeight, 0);
    for (int c = 1; c <= 3; ++c)
        pixels[frameWidth + c] = c == 2 ? 1 : 255; // any non-zero value is inside
    return pixels;
}

QRgb pixelAt(const ImageViewer& viewer, int x, int y)
{
    return shownPixmap(viewer).toImage().pixel(x, y);
}

} // namespace

TEST(ImageViewer, StartsEmptyWithItsControls)
{
    ImageViewer viewer;
    EXPECT_EQ(infoText(viewer), "No Image");
    EXPECT_FALSE(viewer.hasImage());
    EXPECT_TRUE(viewer.isFitMode());
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 1.0);

    const std::pair<const char*, const char*> buttons[]
        = { { "+", "Zoom In" }, { "-", "Zoom Out" }, { "1:1", "Actual Size" }, { "Fit", "Fit to Window" } };
    for (const auto& [text, tip] : buttons) {
        QPushButton* found = button(viewer, text);
        ASSERT_NE(found, nullptr) << text;
        EXPECT_EQ(found->toolTip(), tip);
        EXPECT_EQ(
            found->styleSheet(), "QPushButton { padding: 2px 6px; min-height: 16px; min-width: 20px; }");
    }
    QCheckBox* showMask = checkBox(viewer, "Show Mask");
    QCheckBox* autoContrast = checkBox(viewer, "Auto Contrast");
    ASSERT_NE(showMask, nullptr);
    ASSERT_NE(autoContrast, nullptr);
    EXPECT_EQ(showMask->toolTip(), "Show mask overlay");
    EXPECT_EQ(autoContrast->toolTip(), "Stretch image contrast to full range");
    EXPECT_TRUE(showMask->isChecked());
    EXPECT_TRUE(viewer.isMaskShown());
    EXPECT_FALSE(autoContrast->isChecked());
    EXPECT_FALSE(viewer.isAutoContrast());
}

TEST(ImageViewer, ShowsTheImageAtActualSizeRowByRow)
{
    ImageViewer viewer;
    viewer.actualSize();
    viewer.setImage(frame(), frameWidth, frameHeight, "Event 12");
    EXPECT_EQ(infoText(viewer), "Event 12");
    const QPixmap pixmap = shownPixmap(viewer);
    ASSERT_EQ(pixmap.size(), QSize(frameWidth, frameHeight));
    // Row 2, column 4 and row 1, column 0 of the frame.
    EXPECT_EQ(pixelAt(viewer, 4, 2), qRgb(120, 120, 120));
    EXPECT_EQ(pixelAt(viewer, 0, 1), qRgb(60, 60, 60));
    EXPECT_EQ(viewer.findChild<QLabel*>("imageLabel")->size(), pixmap.size());
}

TEST(ImageViewer, TooFewPixelsOrNoSizeClearTheView)
{
    ImageViewer viewer;
    std::vector<std::uint8_t> oneShort = frame();
    oneShort.pop_back();
    std::vector<std::uint8_t> maskOneShort = mask();
    maskOneShort.pop_back();

    const auto expectCleared = [&viewer](const char* what) {
        EXPECT_FALSE(viewer.hasImage()) << what;
        EXPECT_EQ(infoText(viewer), "No Image") << what;
        EXPECT_TRUE(shownPixmap(viewer).isNull()) << what;
    };
    const auto showOne = [&viewer] {
        viewer.setImage(frame(), frameWidth, frameHeight, "Event 1");
        ASSERT_TRUE(viewer.hasImage());
        ASSERT_FALSE(shownPixmap(viewer).isNull());
    };

    showOne();
    viewer.setImage(oneShort, frameWidth, frameHeight, "Event 2");
    expectCleared("one pixel short");
    showOne();
    viewer.setImage(frame(), 0, frameHeight, "Event 2");
    expectCleared("no width");
    showOne();
    viewer.setImage(frame(), frameWidth, -1, "Event 2");
    expectCleared("negative height");
    showOne();
    viewer.setImage({}, 0, 0, "Event 2");
    expectCleared("nothing");
    showOne();
    viewer.setImageWithMask(frame(), maskOneShort, frameWidth, frameHeight, "Event 2 (with mask)");
    expectCleared("mask one pixel short");

    // More pixels than needed are fine: the first width x height are shown.
    std::vector<std::uint8_t> longer = frame();
    longer.push_back(0);
    viewer.setImage(longer, frameWidth, frameHeight, "Event 3");
    EXPECT_TRUE(viewer.hasImage());
}

TEST(ImageViewer, MaskPixelsAreTintedAndOthersKeepTheirGrey)
{
    ImageViewer viewer;
    viewer.actualSize();
    viewer.setImageWithMask(frame(), mask(), frameWidth, frameHeight, "Event 1 (with mask)");
    // By hand: 0.7 g + 0.3 (R 254, G 204, B 0), rounded. Row 1, column 1 has g = 70:
    // R 49 + 76.2, G 49 + 61.2, B 49. Column 2 (mask value 1) has g = 80: R 132.2, G 117.2, B 56.
    EXPECT_EQ(pixelAt(viewer, 1, 1), qRgb(125, 110, 49));
    EXPECT_EQ(pixelAt(viewer, 2, 1), qRgb(132, 117, 56));
    // Outside the mask: unchanged grey.
    EXPECT_EQ(pixelAt(viewer, 0, 1), qRgb(60, 60, 60));
    EXPECT_EQ(pixelAt(viewer, 4, 1), qRgb(100, 100, 100));
    EXPECT_EQ(pixelAt(viewer, 2, 0), qRgb(60, 60, 60));

    // The next event without mask shows no tint.
    viewer.setImage(frame(), frameWidth, frameHeight, "Event 2");
    EXPECT_EQ(pixelAt(viewer, 1, 1), qRgb(70, 70, 70));
}

TEST(ImageViewer, AutoContrastStretchesBeforeTheTint)
{
    ImageViewer viewer;
    QSignalSpy toggled(&viewer, &ImageViewer::autoContrastToggled);
    viewer.actualSize();
    viewer.setImageWithMask(frame(), mask(), frameWidth, frameHeight, "Event 1 (with mask)");
    checkBox(viewer, "Auto Contrast")->setChecked(true);
    ASSERT_EQ(toggled.count(), 1);
    EXPECT_EQ(toggled.front().front().toBool(), true);
    EXPECT_TRUE(viewer.isAutoContrast());

    // By hand: the frame runs from 40 to 120, so g' = (g - 40) 255 / 80. Corners become 0 and 255;
    // row 0, column 1 (g = 50) becomes 31.875 -> 32; row 1, column 0 (g = 60) 63.75 -> 64. Row 1,
    // column 1 (g = 70, masked) becomes 95.625 -> 96, then is tinted: 0.7 · 96 = 67.2, so R 67.2 + 76.2,
    // G 67.2 + 61.2, B 67.2.
    EXPECT_EQ(pixelAt(viewer, 0, 0), qRgb(0, 0, 0));
    EXPECT_EQ(pixelAt(viewer, 4, 2), qRgb(255, 255, 255));
    EXPECT_EQ(pixelAt(viewer, 1, 0), qRgb(32, 32, 32));
    EXPECT_EQ(pixelAt(viewer, 0, 1), qRgb(64, 64, 64));
    EXPECT_EQ(pixelAt(viewer, 1, 1), qRgb(143, 128, 67));

    // A flat image has nothing to stretch.
    viewer.setImage(std::vector<std::uint8_t>(15, 77), frameWidth, frameHeight, "Event 2");
    EXPECT_EQ(pixelAt(viewer, 2, 2), qRgb(77, 77, 77));

    checkBox(viewer, "Auto Contrast")->setChecked(false);
    EXPECT_EQ(toggled.count(), 2);
    viewer.setImage(frame(), frameWidth, frameHeight, "Event 3");
    EXPECT_EQ(pixelAt(viewer, 0, 0), qRgb(40, 40, 40));
}

TEST(ImageViewer, ShowMaskBoxOnlyReportsItsState)
{
    ImageViewer viewer;
    QSignalSpy toggled(&viewer, &ImageViewer::showMaskToggled);
    checkBox(viewer, "Show Mask")->setChecked(false);
    ASSERT_EQ(toggled.count(), 1);
    EXPECT_EQ(toggled.front().front().toBool(), false);
    EXPECT_FALSE(viewer.isMaskShown());
}

TEST(ImageViewer, ZoomStepsByAQuarterWithinItsLimits)
{
    ImageViewer viewer;
    viewer.setImage(frame(), frameWidth, frameHeight, "Event 1");
    viewer.actualSize();
    EXPECT_FALSE(viewer.isFitMode());

    // 1.25^10 = 9.31; the next step would be 11.6 and stops at 10, and stays there.
    for (int i = 0; i < 10; ++i)
        viewer.zoomIn();
    EXPECT_NEAR(viewer.zoomFactor(), 9.3132257, 1e-6);
    viewer.zoomIn();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 10.0);
    viewer.zoomIn();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 10.0);
    EXPECT_EQ(shownPixmap(viewer).size(), QSize(50, 30));

    // 1.25^-10 = 0.107; the next step would be 0.086 and stops at 0.1.
    viewer.actualSize();
    for (int i = 0; i < 10; ++i)
        viewer.zoomOut();
    EXPECT_NEAR(viewer.zoomFactor(), 0.1073742, 1e-6);
    viewer.zoomOut();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 0.1);
    // 5 x 3 at 0.1 truncates to 0 x 0: nothing to show.
    EXPECT_TRUE(shownPixmap(viewer).isNull());

    // 25 x 12 at 0.1 truncates to 2 x 1.
    viewer.setImage(std::vector<std::uint8_t>(300, 9), 25, 12, "Event 2");
    EXPECT_EQ(shownPixmap(viewer).size(), QSize(2, 1));

    // The buttons do the same as the slots.
    button(viewer, "+")->click();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 0.125);
    button(viewer, "1:1")->click();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 1.0);
    button(viewer, "-")->click();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 0.8);
}

TEST(ImageViewer, ZoomedImagesAreInterpolatedLinearly)
{
    ImageViewer viewer;
    viewer.actualSize();
    viewer.setImage({ 0, 200 }, 2, 1, "Event 1");
    viewer.zoomIn();
    viewer.zoomIn(); // 1.5625 -> 3 x 1 pixels
    ASSERT_EQ(shownPixmap(viewer).size(), QSize(3, 1));
    // Pixel centres map back to x = (i + 0.5) 2/3 - 0.5, i.e. -1/6, 1/2 and 7/6; the outer two are
    // clamped to the edge samples, the middle one lies half-way: 0, 100, 200. (The nearest sample
    // would give 0 in the middle.)
    EXPECT_EQ(pixelAt(viewer, 0, 0), qRgb(0, 0, 0));
    EXPECT_EQ(pixelAt(viewer, 1, 0), qRgb(100, 100, 100));
    EXPECT_EQ(pixelAt(viewer, 2, 0), qRgb(200, 200, 200));
}

TEST(ImageViewer, UserZoomStaysForTheNextEventUntilFit)
{
    ImageViewer viewer;
    viewer.resize(400, 300);
    viewer.show();
    const QWidget* viewport = viewer.findChild<QScrollArea*>()->viewport();
    ASSERT_GT(viewport->width(), 50);
    ASSERT_GT(viewport->height(), 50);
    // The zoom that fits a frame into the viewport as it is now (scroll bars come and go with the zoom).
    const auto fitted = [viewport](int columns, int rows) {
        return std::clamp(std::min(static_cast<double>(viewport->width()) / columns,
                              static_cast<double>(viewport->height()) / rows),
            0.1, 10.0);
    };

    double expected = fitted(250, 80);
    viewer.setImage(std::vector<std::uint8_t>(250 * 80, 100), 250, 80, "Event 1");
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), expected);

    viewer.zoomIn();
    viewer.setImage(std::vector<std::uint8_t>(20 * 10, 100), 20, 10, "Event 2");
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), expected * 1.25);
    EXPECT_FALSE(viewer.isFitMode());

    // "Fit" fits now and again at the next event; tiny frames stop at ten times.
    expected = fitted(20, 10);
    button(viewer, "Fit")->click();
    EXPECT_TRUE(viewer.isFitMode());
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), expected);
    expected = fitted(100, 50);
    viewer.setImage(std::vector<std::uint8_t>(100 * 50, 100), 100, 50, "Event 3");
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), expected);
    EXPECT_GT(expected, 1.0);
    viewer.setImage({ 1, 2, 3, 4 }, 2, 2, "Event 4");
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 10.0);
}

TEST(ImageViewer, SavingWritesTheRawImageWhateverIsDisplayed)
{
    QTemporaryDir folder;
    ScriptedViewer viewer;
    QSignalSpy saved(&viewer, &ImageViewer::imageSaved);
    viewer.setImageWithMask(frame(), mask(), frameWidth, frameHeight, "Event 1 (with mask)");
    checkBox(viewer, "Auto Contrast")->setChecked(true);
    viewer.zoomIn();

    // The name has no suffix: the chosen filter's is added.
    viewer.answerFileName = folder.filePath("event1");
    viewer.answerFilter = "PNG Images (*.png)";
    QMetaObject::invokeMethod(&viewer, "saveImage");
    EXPECT_EQ(viewer.dialogsAsked, 1);
    EXPECT_EQ(viewer.dialogTitle, "Save Image");
    EXPECT_EQ(viewer.dialogFilters, "PNG Images (*.png);;JPEG Images (*.jpg);;All Files (*)");

    const QString written = folder.filePath("event1.png");
    ASSERT_EQ(saved.count(), 1);
    EXPECT_EQ(saved.front().front().toString(), written);
    ASSERT_EQ(viewer.messages.size(), 1u);
    EXPECT_EQ(viewer.messages[0].icon, QMessageBox::Information);
    EXPECT_EQ(viewer.messages[0].title, "Success");
    EXPECT_EQ(viewer.messages[0].text, "Image saved successfully.");

    const cv::Mat back = cv::imread(QFile::encodeName(written).toStdString(), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(back.type(), CV_8UC1);
    ASSERT_EQ(back.cols, frameWidth);
    ASSERT_EQ(back.rows, frameHeight);
    EXPECT_EQ(std::vector<std::uint8_t>(back.datastart, back.dataend), frame());
}

TEST(ImageViewer, SavingReportsNothingToSaveCancelAndFailure)
{
    QTemporaryDir folder;
    ScriptedViewer viewer;
    QSignalSpy saved(&viewer, &ImageViewer::imageSaved);

    QMetaObject::invokeMethod(&viewer, "saveImage");
    EXPECT_EQ(viewer.dialogsAsked, 0);
    ASSERT_EQ(viewer.messages.size(), 1u);
    EXPECT_EQ(viewer.messages[0].icon, QMessageBox::Warning);
    EXPECT_EQ(viewer.messages[0].title, "No Image");
    EXPECT_EQ(viewer.messages[0].text, "There is no image to save.");

    viewer.setImage(frame(), frameWidth, frameHeight, "Event 1");
    viewer.messages.clear();
    viewer.answerFileName.clear(); // cancelled
    QMetaObject::invokeMethod(&viewer, "saveImage");
    EXPECT_EQ(viewer.dialogsAsked, 1);
    EXPECT_TRUE(viewer.messages.empty());

    // No image writer knows ".xyz": the writer throws, and its text is shown.
    viewer.answerFileName = folder.filePath("event1.xyz");
    viewer.answerFilter = "All Files (*)";
    QMetaObject::invokeMethod(&viewer, "saveImage");
    ASSERT_EQ(viewer.messages.size(), 1u);
    EXPECT_EQ(viewer.messages[0].icon, QMessageBox::Critical);
    EXPECT_EQ(viewer.messages[0].title, "Error");
    EXPECT_TRUE(viewer.messages[0].text.startsWith("Failed to save image: "))
        << viewer.messages[0].text.toStdString();
    EXPECT_GT(viewer.messages[0].text.size(), QString("Failed to save image: ").size());
    EXPECT_EQ(saved.count(), 0);
    EXPECT_FALSE(QFile::exists(viewer.answerFileName));
}

TEST(ImageViewer, ContextMenuOffersSavingOnlyWithAnImage)
{
    QTemporaryDir folder;
    ScriptedViewer viewer;
    QSignalSpy saved(&viewer, &ImageViewer::imageSaved);
    QContextMenuEvent rightClick(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(105, 105));

    QApplication::sendEvent(&viewer, &rightClick);
    EXPECT_EQ(viewer.menusShown, 0);

    viewer.setImage(frame(), frameWidth, frameHeight, "Event 1");
    viewer.answerFileName = folder.filePath("menu.png");
    viewer.triggerFirstEntry = true;
    QApplication::sendEvent(&viewer, &rightClick);
    EXPECT_EQ(viewer.menusShown, 1);
    EXPECT_EQ(viewer.menuEntries, QStringList { "Save Image..." });
    EXPECT_EQ(saved.count(), 1);
    EXPECT_TRUE(QFile::exists(folder.filePath("menu.png")));

    viewer.clearImage();
    QApplication::sendEvent(&viewer, &rightClick);
    EXPECT_EQ(viewer.menusShown, 1);
}
