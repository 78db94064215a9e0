#include "ui/MainWindow.h"

#include "app/SafeApplication.h"
#include "support/MessageCapture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace Tessaly;
using Tessaly::Testing::MessageCapture;

namespace {

QList<QMessageBox*> visibleMessageBoxes()
{
    QList<QMessageBox*> boxes;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible())
            boxes << box;
    return boxes;
}

QAbstractButton* buttonWithText(QMessageBox* box, const QString& text)
{
    for (QAbstractButton* button : box->buttons())
        if (button->text() == text)
            return button;
    return nullptr;
}

struct SeenDialog
{
    QMessageBox* box = nullptr;
    QWidget* parent = nullptr;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    QMessageBox::ButtonRole feedbackRole = QMessageBox::InvalidRole;
    QMessageBox::ButtonRole closeRole = QMessageBox::InvalidRole;
    int buttonCount = 0;
};

// Waits for exactly one visible message box and records what it shows.
bool seeDialog(SeenDialog& seen)
{
    if (!QTest::qWaitFor([] { return visibleMessageBoxes().size() == 1; }, 5000))
        return false;
    QMessageBox* box = visibleMessageBoxes().front();
    seen.box = box;
    seen.parent = box->parentWidget();
    seen.icon = box->icon();
    seen.title = box->windowTitle();
    seen.text = box->text();
    seen.buttonCount = box->buttons().size();
    if (QAbstractButton* b = buttonWithText(box, QStringLiteral("Send Feedback...")))
        seen.feedbackRole = box->buttonRole(b);
    if (QAbstractButton* b = buttonWithText(box, QStringLiteral("Close")))
        seen.closeRole = box->buttonRole(b);
    return true;
}

void closeAllMessageBoxes()
{
    for (QMessageBox* box : visibleMessageBoxes())
        box->reject();
}

TEST(MainWindowTest, ShowsOneFailureDialogAtATime)
{
    auto* app = qobject_cast<SafeApplication*>(QCoreApplication::instance());
    ASSERT_NE(app, nullptr);
    MessageCapture log;
    MainWindow window;
    QObject::connect(app, &SafeApplication::unhandledException, &window, &MainWindow::onUnhandledException,
        Qt::QueuedConnection);
    QSignalSpy reports(app, &SafeApplication::unhandledException);

    SeenDialog first;
    bool firstShown = false;
    bool secondReported = false;
    int boxesAfterSecondReport = -1;
    bool countedInTime = false;
    bool secondDialogOpened = false;
    bool probeDone = false;
    QTimer::singleShot(0, &window, [&] {
        firstShown = seeDialog(first);
        if (firstShown) {
            // Should a second dialog open, this closes it from inside its own loop, so that the test
            // fails instead of hanging.
            QTimer guard;
            guard.setInterval(10);
            QObject::connect(&guard, &QTimer::timeout, [&] {
                for (QMessageBox* box : visibleMessageBoxes())
                    if (box != first.box) {
                        secondDialogOpened = true;
                        box->reject();
                    }
            });
            guard.start();

            // A second failure while the dialog is up, through the guard and the queued connection.
            QObject faulty;
            QMetaObject::invokeMethod(
                &faulty, [] { throw std::runtime_error("second fault"); }, Qt::QueuedConnection);
            secondReported = reports.wait(5000);
            // Posted after the report's delivery to the window, so it runs once that is done.
            bool counted = false;
            QMetaObject::invokeMethod(
                &window,
                [&] {
                    boxesAfterSecondReport = visibleMessageBoxes().size();
                    counted = true;
                },
                Qt::QueuedConnection);
            countedInTime = QTest::qWaitFor([&counted] { return counted; }, 5000);
            guard.stop();
            if (QAbstractButton* close = buttonWithText(first.box, QStringLiteral("Close")))
                close->click();
        }
        closeAllMessageBoxes();
        probeDone = true;
    });

    window.onUnhandledException(QStringLiteral("File / Data Error"), QStringLiteral("func: detail"));

    ASSERT_TRUE(QTest::qWaitFor([&probeDone] { return probeDone; }, 10000));
    ASSERT_TRUE(firstShown);
    EXPECT_EQ(first.parent, &window);
    EXPECT_EQ(first.icon, QMessageBox::Critical);
    EXPECT_EQ(first.title, QStringLiteral("File / Data Error"));
    EXPECT_EQ(first.text,
        QStringLiteral("An unexpected error occurred:\n\nfunc: detail\n\nYou can send a diagnostic report to "
                       "help us fix this."));
    EXPECT_EQ(first.buttonCount, 2);
    EXPECT_EQ(first.feedbackRole, QMessageBox::AcceptRole);
    EXPECT_EQ(first.closeRole, QMessageBox::RejectRole);

    EXPECT_TRUE(secondReported);
    EXPECT_TRUE(log.contains(QtCriticalMsg, QStringLiteral("Unhandled exception: second fault")));
    EXPECT_TRUE(countedInTime);
    EXPECT_EQ(boxesAfterSecondReport, 1);
    EXPECT_FALSE(secondDialogOpened);
    EXPECT_TRUE(visibleMessageBoxes().isEmpty());

    // Once the dialog is closed, the next failure is shown again; "Send Feedback..." closes it too.
    SeenDialog again;
    bool againShown = false;
    probeDone = false;
    QTimer::singleShot(0, &window, [&] {
        againShown = seeDialog(again);
        if (againShown)
            if (QAbstractButton* feedback = buttonWithText(again.box, QStringLiteral("Send Feedback...")))
                feedback->click();
        closeAllMessageBoxes();
        probeDone = true;
    });

    window.onUnhandledException(
        QStringLiteral("Unexpected Error"), QStringLiteral("An unknown error occurred."));

    ASSERT_TRUE(QTest::qWaitFor([&probeDone] { return probeDone; }, 10000));
    ASSERT_TRUE(againShown);
    EXPECT_EQ(again.title, QStringLiteral("Unexpected Error"));
    EXPECT_TRUE(again.text.contains(QStringLiteral("\n\nAn unknown error occurred.\n\n")));
    EXPECT_TRUE(visibleMessageBoxes().isEmpty());
}

} // namespace
