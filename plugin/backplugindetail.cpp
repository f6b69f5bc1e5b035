#include "backplugindetail.h"

#include "hostsdk/hostadapter.h"

#include <actionqueuecontroller.h>
#include <control/action.h>
#include <dialog.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <singleton.h>

namespace tessaro::detail {

void showRefusal(const tr::Tr &message)
{
    hostsdk::showMessage(message, Dialog::Error);
}

EContext::Result refuseIncomplete(const Log4Qt::Logger *logger, const control::Action &action, const QString &missing)
{
    logger->error(QStringLiteral("Действие %1 без %2 отклонено").arg(action.getType()).arg(missing));
    return EContext::Stop;
}

} // namespace tessaro::detail
