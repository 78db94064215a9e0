#include "app/SafeApplication.h"

#include "support/MessageCapture.h"

#include <H5Cpp.h>
#include <QCoreApplication>
#include <QEvent>
#include <QSignalSpy>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace Tessaly;
using Tessaly::Testing::MessageCapture;

namespace {

SafeApplication* safeApp()
{
    return qobject_cast<SafeApplication*>(QCoreApplication::instance());
}

// Throws from its event handler, as a faulty widget would.
class ThrowingObject : public QObject
{
public:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::User)
            throw std::runtime_error("thrown from an event handler");
        return QObject::event(event);
    }
};

TEST(SafeApplicationTest, CatchesEachKindOfExceptionFromASlotAndReportsIt)
{
    ASSERT_NE(safeApp(), nullptr);
    const struct
    {
        const char* kind;
        std::function<void()> thrower;
        QString logged;
        QString title;
        QString message;
    } cases[] = {
        { "HDF5", [] { throw H5::FileIException("func", "detail"); },
            QStringLiteral("Unhandled HDF5 exception: func: detail"), QStringLiteral("File / Data Error"),
            QStringLiteral("func: detail") },
        { "standard", [] { throw std::runtime_error("disk on fire"); },
            QStringLiteral("Unhandled exception: disk on fire"), QStringLiteral("Unexpected Error"),
            QStringLiteral("disk on fire") },
        { "other", [] { throw 42; }, QStringLiteral("Unhandled non-standard exception"),
            QStringLiteral("Unexpected Error"), QStringLiteral("An unknown error occurred.") },
    };

    for (const auto& c : cases) {
        SCOPED_TRACE(c.kind);
        MessageCapture log;
        QSignalSpy reports(safeApp(), &SafeApplication::unhandledException);
        QObject receiver;
        bool laterSlotRan = false;
        // Delivered by the event loop through notify(), like any queued slot.
        QMetaObject::invokeMethod(&receiver, c.thrower, Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            &receiver, [&laterSlotRan] { laterSlotRan = true; }, Qt::QueuedConnection);

        ASSERT_TRUE(reports.wait(5000));
        ASSERT_EQ(reports.size(), 1);
        EXPECT_EQ(reports.at(0).at(0).toString(), c.title);
        EXPECT_EQ(reports.at(0).at(1).toString(), c.message);
        EXPECT_TRUE(log.contains(QtCriticalMsg, c.logged));
        // The event loop goes on after the failure.
        EXPECT_TRUE(QTest::qWaitFor([&laterSlotRan] { return laterSlotRan; }, 5000));
    }
}

TEST(SafeApplicationTest, NotifyReturnsFalseForAnEventWhoseHandlerThrew)
{
    ASSERT_NE(safeApp(), nullptr);
    MessageCapture log;
    QSignalSpy reports(safeApp(), &SafeApplication::unhandledException);
    ThrowingObject receiver;
    QEvent event(QEvent::User);

    EXPECT_FALSE(QCoreApplication::sendEvent(&receiver, &event));

    ASSERT_EQ(reports.size(), 1);
    EXPECT_EQ(reports.at(0).at(1).toString(), QStringLiteral("thrown from an event handler"));
    EXPECT_TRUE(
        log.contains(QtCriticalMsg, QStringLiteral("Unhandled exception: thrown from an event handler")));
}

} // namespace
