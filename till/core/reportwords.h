#pragma once

#include "exitcode.h"

#include <QString>
#include <QStringList>

namespace till {

/// The words the till's reports share, so that a run's report, the
/// simulation's, the check's and the demo's say the same thing the same way:
/// the verdict, a count, a failure's line, the tally that closes a report and
/// the exit code it ends with.
class ReportWords
{
public:
    /// "passed" or "FAILED": the verdict on a run, a scenario or a session;
    /// the failure shouts, so that it stands out in a long report.
    static QString verdict(bool passed);
    /// "FAILED  what": a failure under the line it belongs to.
    static QString failure(const QString &what);
    /// "3 warnings", "1 warning": \a count things, named \a one or \a many.
    static QString count(qint64 count, const QString &one, const QString &many);
    /// "3 dialog(s)": \a count things whose name does not change with the count.
    static QString count(qint64 count, const QString &noun);
    /// "5 passed, 0 failed": the counts that close a report, in their order.
    static QString tally(const QStringList &counts);
    /// "(exit code 2)": the code the command ends with.
    static QString exitCode(ExitCode code);
};

} // namespace till
