#include "dialog.h"

#include "log4qt/logmanager.h"

namespace {
Log4Qt::Logger *logger()
{
    return Log4Qt::LogManager::logger(QStringLiteral("host.dialog"));
}
} // namespace

Dialog::~Dialog() = default;

void Dialog::showMessage(const tr::Tr &message, int kind, int)
{
    const QString line = QStringLiteral("[%1] %2").arg(message.id(), message.text());
    if (kind == Error)
        logger()->warn(line);
    else
        logger()->info(line);
}

int Dialog::showChoice(const tr::Tr &title, const QStringList &items)
{
    logger()->info(QStringLiteral("[%1] %2: %3 (cancelled)").arg(title.id(), title.text(), items.join(QStringLiteral(", "))));
    return -1;
}

QSharedPointer<SimpleProgress> Dialog::showProgress(const tr::Tr &message)
{
    logger()->info(QStringLiteral("[%1] %2").arg(message.id(), message.text()));
    return QSharedPointer<SimpleProgress>::create(message);
}
