#include "logcapture.h"

#include <QMutex>

#include <algorithm>

namespace {

// The message handler is a plain function, so the capture's state is global.
QMutex mutex;
QList<LogCapture::Message> captured;
QtMessageHandler previous = nullptr;

void capture(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    QtMessageHandler forward = nullptr;
    {
        QMutexLocker lock(&mutex);
        captured.append({type, QString::fromUtf8(context.category), text});
        forward = previous;
    }
    if (type != QtDebugMsg && type != QtInfoMsg && forward)
        forward(type, context, text);
}

} // namespace

LogCapture::LogCapture()
{
    const QtMessageHandler installed = qInstallMessageHandler(&capture);
    QMutexLocker lock(&mutex);
    captured.clear();
    previous = installed;
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(previous);
    QMutexLocker lock(&mutex);
    captured.clear();
    previous = nullptr;
}

QList<LogCapture::Message> LogCapture::messages() const
{
    QMutexLocker lock(&mutex);
    return captured;
}

QStringList LogCapture::texts(const QString &category, QtMsgType type) const
{
    QStringList texts;
    for (const Message &message : messages()) {
        if (message.category == category && message.type == type)
            texts.append(message.text);
    }
    return texts;
}

bool LogCapture::contains(const QString &fragment) const
{
    const QList<Message> all = messages();
    return std::any_of(all.cbegin(), all.cend(), [&fragment](const Message &message) {
        return message.text.contains(fragment);
    });
}

void LogCapture::clear()
{
    QMutexLocker lock(&mutex);
    captured.clear();
}
