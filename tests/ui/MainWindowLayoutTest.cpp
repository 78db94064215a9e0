#include "MainWindowFixture.h"
#include "app/Theme.h"
#include "plot/ScatterPlot.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QLayout>
#include <QListWidget>
#include <QPalette>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QTest>
#include <QTextDocument>
#include <qwt_plot_canvas.h>
#include <qwt_scale_widget.h>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

namespace {

// The main window as the program shows it: its style, palette and style sheet, which decide the
// sizes of every control.
class MainWindowLayout : public MainWindowFixture
{
protected:
    void SetUp() override
    {
        MainWindowFixture::SetUp();
        savedSheet = qApp->styleSheet();
        savedPalette = qApp->palette();
        savedStyle = qApp->style()->objectName();
        QApplication::setStyle(QStringLiteral("Fusion"));
        QApplication::setPalette(applicationPalette());
        qApp->setStyleSheet(applicationStyleSheet());
    }

    void TearDown() override
    {
        MainWindowFixture::TearDown();
        qApp->setStyleSheet(savedSheet);
        QApplication::setPalette(savedPalette);
        QApplication::setStyle(savedStyle);
    }

    // A window of the given size with two datasets of cells, one of them active.
    MainWindow& showWithData(const QSize& size)
    {
        MainWindow& w = makeWindow();
        w.resize(size);
        w.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&w));
        w.openDataset(writeDataset("a/control.vqd", "Control", 300, true));
        w.openDataset(writeDataset("b/treated.vqd", "Treated", 300, true));
        EXPECT_TRUE(waitUntilIdle());
        // Colour by a feature, so that the colour bar takes its place too.
        auto* color = w.findChild<QComboBox*>("colorFeatureCombo");
        color->setCurrentIndex(color->findData(QStringLiteral("bright_avg")));
        EXPECT_GE(color->currentIndex(), 0);
        QTest::qWait(50);
        return w;
    }

    QString savedSheet;
    QPalette savedPalette;
    QString savedStyle;
};

void collectLaidOut(const QLayout* layout, QList<QWidget*>& widgets)
{
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (QWidget* widget = item->widget()) {
            if (widget->isVisible())
                widgets << widget;
        } else if (const QLayout* inner = item->layout()) {
            collectLaidOut(inner, widgets);
        }
    }
}

QString describe(const QWidget* w)
{
    QString text = QString::fromLatin1(w->metaObject()->className());
    if (!w->objectName().isEmpty())
        text += QLatin1Char(' ') + w->objectName();
    if (const auto* button = qobject_cast<const QAbstractButton*>(w))
        text += QStringLiteral(" \"%1\"").arg(button->text());
    if (const auto* label = qobject_cast<const QLabel*>(w))
        text += QStringLiteral(" \"%1\"").arg(label->text());
    return text;
}

// Pairs of visible widgets that one layout or splitter placed over each other.
QStringList overlappingSiblings(QWidget* root)
{
    QStringList found;
    QList<QWidget*> hosts = root->findChildren<QWidget*>();
    hosts.prepend(root);
    for (QWidget* host : hosts) {
        if (!host->isVisible())
            continue;
        QList<QWidget*> placed;
        if (const QLayout* layout = host->layout())
            collectLaidOut(layout, placed);
        if (const auto* splitter = qobject_cast<QSplitter*>(host)) {
            for (int i = 0; i < splitter->count(); ++i) {
                if (splitter->widget(i)->isVisible())
                    placed << splitter->widget(i);
            }
        }
        for (int i = 0; i < placed.size(); ++i) {
            for (int j = i + 1; j < placed.size(); ++j) {
                if (placed[i]->geometry().intersects(placed[j]->geometry()))
                    found << describe(placed[i]) + " / " + describe(placed[j]);
            }
        }
    }
    return found;
}

// Buttons, check boxes and one-line labels that got less room than their text needs, or lie partly
// outside the parent that shows them.
QStringList cutTexts(QWidget* root)
{
    QStringList found;
    for (QWidget* w : root->findChildren<QWidget*>()) {
        if (!w->isVisible())
            continue;
        const auto* button = qobject_cast<QAbstractButton*>(w);
        const auto* label = qobject_cast<QLabel*>(w);
        const bool text = (button && !button->text().isEmpty())
            || (label && !label->wordWrap() && !label->text().isEmpty()
                && label->pixmap(Qt::ReturnByValue).isNull());
        if (!text)
            continue;
        if (w->width() < w->sizeHint().width())
            found
                << QStringLiteral("%1: %2 < %3").arg(describe(w)).arg(w->width()).arg(w->sizeHint().width());
        // Whole in its own rectangle, but cut off by a parent that is too small for it. A widget
        // with nothing visible lies on a dock tab behind another one, which the window keeps
        // shown off screen.
        else if (!w->visibleRegion().isEmpty() && w->visibleRegion().boundingRect() != w->rect())
            found << QStringLiteral("%1: hidden in part").arg(describe(w));
    }
    return found;
}

} // namespace

// The window fits a laptop screen, and the plot gets most of the centre: at 1400 x 900 the
// plot/event split of 600 to 260 holds, at 1024 x 700 the plot is still the larger part. At both
// sizes no layout puts one control over another and no button or label loses text.
TEST_F(MainWindowLayout, PlotTakesTheCentreAndNothingOverlapsOrIsCut)
{
    struct SizeCase
    {
        QSize size;
        double plotShare; // of the plot/event split, at least
        int canvasWidth; // at least
    };
    // On a laptop screen the docks keep their least widths, which leaves the canvas small.
    const SizeCase cases[] = { { { 1400, 900 }, 0.66, 400 }, { { 1024, 700 }, 0.55, 100 } };
    for (const SizeCase& c : cases) {
        SCOPED_TRACE(QStringLiteral("%1 x %2").arg(c.size.width()).arg(c.size.height()).toStdString());
        MainWindow& w = showWithData(c.size);
        EXPECT_LE(w.minimumSizeHint().width(), 1024);
        EXPECT_LE(w.minimumSizeHint().height(), 700);
        EXPECT_EQ(w.size(), c.size);

        auto* plot = w.findChild<ScatterPlot*>("scatterPlot");
        auto* tabs = w.findChild<QTabWidget*>();
        ASSERT_NE(plot, nullptr);
        ASSERT_NE(tabs, nullptr);
        const double share = double(plot->width()) / double(plot->width() + tabs->width());
        EXPECT_GE(share, c.plotShare) << plot->width() << " " << tabs->width();
        EXPECT_GE(plot->canvas()->width(), c.canvasWidth);

        // The colour bar and its title lie inside the plot, beside the canvas.
        QwtScaleWidget* bar = plot->axisWidget(QwtPlot::yRight);
        ASSERT_TRUE(bar->isVisible());
        EXPECT_TRUE(plot->rect().contains(bar->geometry()))
            << bar->geometry().right() << " " << plot->width();
        EXPECT_FALSE(bar->geometry().intersects(plot->canvas()->geometry()));

        EXPECT_EQ(overlappingSiblings(&w).join("; ").toStdString(), "");
        EXPECT_EQ(cutTexts(&w).join("; ").toStdString(), "");
        window.reset();
    }
}

// The scale choices show whole, in the box and in the list that drops down, also when "Log" carries
// its warning sign.
TEST_F(MainWindowLayout, ScaleChoicesAreNotCut)
{
    MainWindow& w = showWithData({ 1024, 700 });
    for (const char* name : { "xScaleCombo", "yScaleCombo" }) {
        auto* combo = w.findChild<QComboBox*>(name);
        ASSERT_NE(combo, nullptr);
        combo->setItemText(1, MainWindowTexts::logWarningItem);
        EXPECT_GE(combo->width(), combo->sizeHint().width()) << name;
        combo->showPopup();
        QAbstractItemView* list = combo->view();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(list->window()));
        EXPECT_GE(list->viewport()->width(), list->sizeHintForColumn(0)) << name;
        combo->hidePopup();
    }
}

// Resized from a desktop size down to a laptop's, the window keeps every control whole too.
TEST_F(MainWindowLayout, ShrinkingToALaptopScreenKeepsEveryTextWhole)
{
    MainWindow& w = showWithData({ 1400, 900 });
    w.resize(1024, 700);
    QTest::qWait(50);
    EXPECT_EQ(w.size(), QSize(1024, 700));
    auto* plot = w.findChild<ScatterPlot*>("scatterPlot");
    auto* tabs = w.findChild<QTabWidget*>();
    EXPECT_GE(plot->width(), tabs->width());
    EXPECT_EQ(overlappingSiblings(&w).join("; ").toStdString(), "");
    EXPECT_EQ(cutTexts(&w).join("; ").toStdString(), "");
    // Each dock of the tabbed stack, brought to the front, keeps its texts whole too.
    for (QDockWidget* dock : w.findChildren<QDockWidget*>()) {
        dock->raise();
        QCoreApplication::processEvents();
        SCOPED_TRACE(dock->windowTitle().toStdString());
        EXPECT_EQ(cutTexts(dock).join("; ").toStdString(), "");
    }
}
