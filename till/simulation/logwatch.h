#pragma once

#include <QMutex>
#include <QStringList>
#include <QtGlobal>

namespace till {

/// Catches every log line of the process (the plug-in's and the host's go
/// through Qt's categorised logging), debug lines included, instead of
/// printing them, so that the simulation can read what the till logged.
/// One at a time: it installs itself as Qt's message handler.
class LogWatch
{
public:
    LogWatch();
    ~LogWatch();
    LogWatch(const LogWatch &) = delete;
    LogWatch &operator=(const LogWatch &) = delete;

    /// The lines logged since the last call.
    QStringList take();

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);

    QtMessageHandler m_previous = nullptr;
    QMutex m_mutex;
    QStringList m_lines;
};

} // namespace till
