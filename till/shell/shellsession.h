#pragma once

#include "exitcode.h"
#include "tilldatafolder.h"

#include <QString>

class AbstractDocument;
class QTextStream;

namespace till {

class ActionLog;
class CassetteRecorder;
class Till;
class TillActions;

/// The till at the terminal: the cashier types commands (new-return, add,
/// pay, close…), answers the plug-in's dialogs as they come, and sees after
/// each command the hooks that ran, the dialogs and the requests.
class ShellSession
{
public:
    ShellSession(const TillDataFolder &folder, QTextStream *in, QTextStream *out);

    /// Runs until "quit" or the end of input.
    ExitCode run(const QString &pluginFolder);

    static QString help();
    /// Keeps every exchange with the service in \a recorder (null: none).
    void setRecorder(CassetteRecorder *recorder) { m_recorder = recorder; }

private:
    /// Runs one command line; false for "quit".
    bool execute(const QString &line, Till *till, TillActions *actions, ActionLog *log);
    void newDocument(int type, const QString &saleIdentifier, Till *till, TillActions *actions);
    /// The return invoice number the service assigned to \a document, once it has one.
    void showReturnInvoice(const AbstractDocument &document, int cardType) const;

    TillDataFolder m_folder;
    QTextStream *m_in;
    QTextStream *m_out;
    CassetteRecorder *m_recorder = nullptr;
};

} // namespace till
