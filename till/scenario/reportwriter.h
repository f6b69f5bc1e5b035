#pragma once

#include "report.h"

#include <QString>

namespace till {

/// Shows a run's report: as text for a person at the terminal, one progress
/// line per action while the run goes, and as JSON for programs.
class ReportWriter
{
public:
    /// One line: "[3/7] add 4600000000017 ×2 → 2" with a mark when something failed.
    static QString progressLine(const ActionRecord &record, int actionCount);
    /// What happened in the action, one indented line per step, dialog and request.
    static QString details(const ActionRecord &record);
    /// A document's state, a few indented lines.
    static QString document(const QString &name, const QJsonObject &snapshot);
    /// The whole report.
    static QString text(const Report &report);
    static bool writeJson(const Report &report, const QString &file, QString *error);
};

} // namespace till
