#include "backdialog.h"

#include <eactivitylistener.h>
#include <inputmultitextparams.h>
#include <log4qt/logmanager.h>

#include <QJsonDocument>

namespace tessaro {

BackDialog::BackDialog(QObject *parent)
    : core::BasicDialog(parent)
{
}

QVariantMap BackDialog::inputInvoiceInfo(const InputMultiTextParams &params)
{
    Log4Qt::Logger *logger = Log4Qt::LogManager::logger(QStringLiteral("tessaroback"));
    logger->info(QStringLiteral("Ввод идентификатора инвойса"));

    Event event = params.getEvent(EActivityListener::InputMultiText);
    event.insert(QStringLiteral("form"), QStringLiteral("InputInvoiceInfo"));
    const Event answer = show(false, false, EInput::Keyboard, event);

    const QVariant data = answer.value(QStringLiteral("data"));
    logger->info(QStringLiteral("Ответ: %1")
                     .arg(data.isNull() ? QStringLiteral("ввод отменен")
                                        : QString::fromUtf8(QJsonDocument::fromVariant(data).toJson(QJsonDocument::Compact))));
    return data.toMap();
}

} // namespace tessaro
