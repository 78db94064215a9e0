#pragma once

#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QVector>
#include <QtGlobal>

namespace Tessaly::Testing {

// Collects every Qt message while it lives, instead of printing it, and puts the earlier handler
// back when it goes. Only one may live at a time. Messages may come from any thread.
class MessageCapture
{
public:
    struct Message
    {
        QtMsgType type;
        QString text;
    };

    MessageCapture()
    {
        instance() = this;
        previous = qInstallMessageHandler(&MessageCapture::handle);
    }
    ~MessageCapture()
    {
        qInstallMessageHandler(previous);
        instance() = nullptr;
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    QVector<Message> messages() const
    {
        QMutexLocker lock(&mutex);
        return captured;
    }

    bool contains(QtMsgType type, const QString& text) const
    {
        for (const Message& m : messages())
            if (m.type == type && m.text == text)
                return true;
        return false;
    }

    bool containsText(const QString& part) const
    {
        for (const Message& m : messages())
            if (m.text.contains(part))
                return true;
        return false;
    }

    void clear()
    {
        QMutexLocker lock(&mutex);
        captured.clear();
    }

private:
    static MessageCapture*& instance()
    {
        static MessageCapture* current = nullptr;
        return current;
    }

    static void handle(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        if (MessageCapture* self = instance()) {
            QMutexLocker lock(&self->mutex);
            self->captured.push_back({ type, text });
        }
    }

    mutable QMutex mutex;
    QVector<Message> captured;
    QtMessageHandler previous = nullptr;
};

} // namespace Tessaly::Testing
