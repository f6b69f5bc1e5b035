#include "reportwords.h"

namespace till {

QString ReportWords::verdict(bool passed)
{
    return passed ? QStringLiteral("passed") : QStringLiteral("FAILED");
}

QString ReportWords::failure(const QString &what)
{
    return verdict(false) + QStringLiteral("  ") + what;
}

QString ReportWords::count(qint64 count, const QString &one, const QString &many)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : many);
}

QString ReportWords::count(qint64 count, const QString &noun)
{
    return ReportWords::count(count, noun, noun);
}

QString ReportWords::tally(const QStringList &counts)
{
    return counts.join(QStringLiteral(", "));
}

QString ReportWords::exitCode(ExitCode code)
{
    return QStringLiteral("(exit code %1)").arg(exitStatus(code));
}

} // namespace till
