#pragma once

#include "exitcode.h"
#include "scenario.h"
#include "tilldatafolder.h"

#include <QString>
#include <QStringList>

#include <optional>

class AbstractDocument;
class QTextStream;

namespace till {

class ActionPlayer;
class CassetteRecorder;
class Till;

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
    bool execute(const QString &line, Till *till, ActionPlayer *player);
    /// The till action the command \a words ask for; nothing, after saying why, when they ask for none.
    std::optional<ScenarioAction> action(const QStringList &words, const QString &line, Till *till, ActionPlayer *player);
    /// Describes a new document of host type \a type in m_opened, under a run
    /// of its own, and returns the action that opens it.
    ScenarioAction newDocument(int type, const QString &saleIdentifier, Till *till, ActionPlayer *player);
    /// The return invoice number the service assigned to \a document, once it has one.
    void showReturnInvoice(const AbstractDocument &document, int cardType) const;

    TillDataFolder m_folder;
    QTextStream *m_in;
    QTextStream *m_out;
    CassetteRecorder *m_recorder = nullptr;
    /// The document the cashier opened last, named "shell", for the player; each takes a run of its own.
    Scenario m_opened;
};

} // namespace till
