// BackPlugin: the return flow: binding a return document to the sale it
// reverses, the original invoice the cashier enters, and the return reasons.

#include "backplugin.h"

#include "backplugindetail.h"
#include "hostsdk/hostadapter.h"
#include "returns/backdialog.h"
#include "secrets/linesanitizer.h"

#include <abstractdocument.h>
#include <backbysaledocument.h>
#include <control/args/backbysale.h>
#include <control/args/core.h>
#include <dialog.h>
#include <dictionariesdao.h>
#include <documentlogic.h>
#include <goodsitem.h>
#include <inputmultitextparams.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>
#include <tr.h>

namespace tessaro {

using detail::ReturnTypes;
using detail::showRefusal;

namespace {

// The host's dictionary of return reasons that a return must have entries in.
constexpr int BackReasonDictionary = 2;

const QString ReasonNamespace = QStringLiteral("tessaro");
const QString ReasonKey = QStringLiteral("backReason");

InputMultiTextParams::Field stringField(const QString &name, const tr::Tr &label, const QString &value,
                                        const QString &pattern)
{
    InputMultiTextParams::Field field;
    field.name = name;
    field.label = label;
    field.value = value;
    field.pattern = pattern;
    return field;
}

} // namespace

void BackPlugin::setDocument(const QSharedPointer<AbstractDocument> &document)
{
    if (document == getDocument())
        return;
    DocumentWatcher::setDocument(document);
    if (!document || !hostsdk::hasType(*document, ReturnTypes)) {
        disableTriggers(triggerIds);
        return;
    }

    logger->info(QStringLiteral("Переключение на режим возврата"));
    if (auto *backBySale = qobject_cast<BackBySaleDocument *>(document.data())) {
        if (!bindBackBySale(*backBySale))
            return;
        backBySale->setAdditionalBackBySaleValuts(additionalBackBySaleValuts);
    }

    deregisterLoyaltySystem();
    registerLoyaltySystem();
    enableTriggers();
    // A document reopened after a restart keeps the token it was processed with.
    restoreToken();

    InvoiceInfo info = getInvoiceInfo();
    if (info.valid()) {
        logger->debug(QStringLiteral("Обработка возврата по инвойсу %1").arg(LineSanitizer::escaped(info.invoiceIdRaw())));
        return;
    }
    if (document->getType() == EDocumentType::Back) {
        info = inputInvoiceInfo();
        if (info.valid()) {
            checkBackReasons();
            storeInvoiceInfo(info);
        }
    }
}

bool BackPlugin::bindBackBySale(const BackBySaleDocument &document) const
{
    const QString identifier = hostsdk::saleIdentifier(document);
    logger->info(QStringLiteral("Идентификатор чека продажи: %1").arg(LineSanitizer::escaped(identifier)));
    if (identifier.size() != 12 && identifier.size() != 24) {
        showRefusal(tr::Tr(QStringLiteral("tessaroBackBySaleIncorrectId"),
                           QStringLiteral("Некорректный идентификатор оригинального инвойса")));
        return false;
    }

    InvoiceInfo info(identifier);
    info.storeNumber = hostsdk::documentShopCode(document);
    const auto source = hostsdk::sourceDocument(document);
    info.invoiceDate = (source ? source->getDateTime() : document.getDateTime()).date();
    logger->info(QStringLiteral("Номер оригинального инвойса: %1").arg(LineSanitizer::escaped(info.invoiceIdRaw())));
    storeInvoiceInfo(info);
    return true;
}

EContext::Result BackPlugin::beforeInput(const control::Action &)
{
    const auto document = getDocument();
    if (!document || document->getType() != EDocumentType::Back || getInvoiceInfo().valid())
        return EContext::NotHandled;
    const InvoiceInfo info = inputInvoiceInfo();
    if (!info.valid())
        return EContext::Stop;
    storeInvoiceInfo(info);
    return EContext::Continue;
}

EContext::Result BackPlugin::selectBackReason(const control::Action &action)
{
    const auto document = getDocument();
    const auto reasons = document ? hostsdk::backReasons(hostsdk::backReasonDictionaryKind(*document))
                                  : QList<DictionariesDao::BackReason>();
    if (reasons.isEmpty())
        return EContext::Continue;

    if (action.value(QStringLiteral("target")).toString() == QLatin1String("document")) {
        const QVariant previous = hostsdk::commonBackReason(*document);
        hostsdk::setCommonBackReason(*document, QVariant());
        if (!hostsdk::chooseCommonBackReason(document))
            hostsdk::setCommonBackReason(*document, previous);
        return EContext::Continue;
    }

    const control::args::Core core(action);
    auto position = core.getPosition();
    if (!position && hostsdk::positionKind(core) == 1)
        position = hostsdk::positionByNumber(*document, core.positionNumber());
    if (!position) {
        showRefusal(tr::Tr(QStringLiteral("selectedPositionIsNotAProduct"),
                           QStringLiteral("Выбранная позиция не является товаром")));
        return EContext::Stop;
    }

    int chosen = 0;
    if (reasons.size() > 1) {
        QStringList names;
        for (const auto &reason : reasons)
            names << reason.name;
        chosen = hostsdk::showChoice(
            tr::Tr(QStringLiteral("tessaroPositionBackReason"), QStringLiteral("Выберите причину возврата для товара")), names);
    }
    if (chosen >= 0 && chosen < reasons.size()) {
        hostsdk::setAdditionalData(*position, ReasonNamespace, ReasonKey, reasons.at(chosen).code);
        logger->info(QStringLiteral("Для позиции %1 выбрана причина %2").arg(position->getPosnum()).arg(LineSanitizer::escaped(reasons.at(chosen).name)));
    } else if (const QVariant kept = hostsdk::additionalData(*position, ReasonNamespace, ReasonKey); !kept.isNull()) {
        logger->info(QStringLiteral("Сохранена установленная ранее причина возврата %1").arg(kept.toInt()));
    } else if (const QVariant common = hostsdk::commonBackReason(*document); !common.isNull()) {
        hostsdk::setAdditionalData(*position, ReasonNamespace, ReasonKey, common.toInt());
        logger->info(QStringLiteral("Для позиции %1 установлена общая причина %2").arg(position->getPosnum()).arg(common.toInt()));
    } else {
        logger->info(QStringLiteral("Общая причина возврата не установлена"));
    }
    return EContext::Continue;
}

EContext::Result BackPlugin::beforeAttemptToBackBySale(const control::Action &action)
{
    // A document kept as a pointer to its own class converts through the meta-type system.
    const auto document = action.value(QStringLiteral("document")).value<QSharedPointer<AbstractDocument>>();
    if (!document)
        return detail::refuseIncomplete(logger, action, QStringLiteral("документа"));
    if (!hostsdk::chooseCommonBackReason(document))
        return EContext::Stop;
    logger->info(QStringLiteral("Выбрана общая причина возврата: %1").arg(hostsdk::commonBackReason(*document).toInt()));
    return EContext::Continue;
}

EContext::Result BackPlugin::beforeBackBySale(const control::Action &action)
{
    const QString processed = QStringLiteral("processed");
    if (!action.value(QStringLiteral("orvel"), false).toBool() || action.value(processed, false).toBool())
        return EContext::Continue;
    action.insert(processed, true);

    logger->info(QStringLiteral("Ввод идентификатора инвойса"));
    const InvoiceInfo info = inputInvoiceInfo();
    if (!info.valid())
        return EContext::Stop;
    control::args::BackBySale(action).setIdentifier(info.documentId());
    return EContext::Continue;
}

void BackPlugin::checkBackReasons() const
{
    if (hostsdk::backReasons(BackReasonDictionary).isEmpty())
        showRefusal(tr::Tr(QStringLiteral("tessaroBackReasonListIsEmpty"), QStringLiteral("В таблице причин возврата нет записей")));
}

InvoiceInfo BackPlugin::inputInvoiceInfo()
{
    logger->info(QStringLiteral("Ввод информации об оригинальном инвойсе"));

    InputMultiTextParams params;
    params.setTitle(tr::Tr(QStringLiteral("tessaroInvoiceInfo"), QStringLiteral("Ввод информации об оригинальном инвойсе")));
    params.setButton(tr::Tr(QStringLiteral("tessaroInvoiceInfoOk"), QStringLiteral("Ввод")));
    params.addField(stringField(QStringLiteral("cashCode"),
                                tr::Tr(QStringLiteral("tessaroInvoiceInfoCashNumber"), QStringLiteral("Номер кассы")),
                                QStringLiteral("0000"), QStringLiteral("[0-9]{1,4}")));
    params.addField(stringField(QStringLiteral("invoiceNumber"),
                                tr::Tr(QStringLiteral("tessaroInvoiceInfoInvoiceNumber"), QStringLiteral("Номер инвойса")),
                                QStringLiteral("000000"), QStringLiteral("[0-9]{1,6}")));
    params.addField(stringField(QStringLiteral("storeNumber"),
                                tr::Tr(QStringLiteral("tessaroInvoiceInfoStore"), QStringLiteral("Номер ТЦ")),
                                Singleton<Session>::instance()->getRegistry().getShopCode(), QString()));
    InputMultiTextParams::Field date = stringField(
        QStringLiteral("invoiceDate"), tr::Tr(QStringLiteral("tessaroInvoiceInfoDate"), QStringLiteral("Дата")), QString(), QString());
    date.type = InputMultiTextParams::Date;
    date.format = QStringLiteral("dd.MM.yyyy");
    params.addField(date);

    const QVariantMap answer = MockFactory<BackDialog>::create()->inputInvoiceInfo(params);
    if (answer.isEmpty()) {
        invoiceInfo = InvoiceInfo();
        exitToMenu();
        return invoiceInfo;
    }
    invoiceInfo = InvoiceInfo::fromMap(answer);
    logger->info(QStringLiteral("Введен номер инвойса: %1; номер ТЦ: %2").arg(LineSanitizer::escaped(invoiceInfo.invoiceIdRaw()), LineSanitizer::escaped(invoiceInfo.storeNumber)));
    return invoiceInfo;
}

void BackPlugin::storeInvoiceInfo(const InvoiceInfo &info) const
{
    const auto document = getDocument();
    if (!document)
        return;
    hostsdk::setDocumentProperty(*document, QStringLiteral("invoiceInfo"), info.toMap());
    hostsdk::setDocumentProperty(*document, QStringLiteral("originalInvoiceIDRaw"), info.invoiceIdRaw());
    hostsdk::setDocumentProperty(*document, QStringLiteral("originalInvoiceID"), info.invoiceId());
    hostsdk::markChanged(*document);
}

InvoiceInfo BackPlugin::getInvoiceInfo() const
{
    const auto document = getDocument();
    return document ? InvoiceInfo::fromMap(hostsdk::documentProperty(*document, QStringLiteral("invoiceInfo")).toMap()) : InvoiceInfo();
}

} // namespace tessaro
