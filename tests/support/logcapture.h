#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

/// Collects what Qt's logging writes, from every thread, while the object
/// exists: a test reads the lines that a logger under test produced. Debug and
/// info lines are kept only here; warnings and worse also go on to the handler
/// that was installed before (QtTest's, so QTest::ignoreMessage still works).
///
/// One capture at a time: the message handler is process-wide.
class LogCapture
{
public:
    struct Message
    {
        QtMsgType type = QtDebugMsg;
        QString category;
        QString text;
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// Every message so far, in the order written.
    QList<Message> messages() const;
    /// The texts of the messages of \a category and \a type.
    QStringList texts(const QString &category, QtMsgType type) const;
    /// Whether any message so far contains \a fragment.
    bool contains(const QString &fragment) const;
    void clear();
};
