// BackPlugin: the close of a return document: the advice note sent to the
// service, with the shift opened once when the service has it closed.

#include "backplugin.h"

#include "client/interface.h"
#include "hostsdk/hostadapter.h"
#include "responses/advicenoteresponse.h"
#include "responses/response.h"
#include "responses/shiftclosedexception.h"
#include "secrets/linesanitizer.h"

#include <abstractdocument.h>
#include <backbysaledocument.h>
#include <basicexception.h>
#include <dialog.h>
#include <documentfacade.h>
#include <documentsdao.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <savetofilelogic.h>
#include <session.h>
#include <shiftopenexception.h>
#include <singleton.h>
#include <storageitem.h>

#include <QJsonDocument>

namespace tessaro {

namespace {

const QString AdviceNoteResponseKey = QStringLiteral("adviceNoteResponse");

} // namespace

EContext::Result BackPlugin::beforeAttemptToDocumentClose(const control::Action &)
{
    // A shift closed at the service is opened once, then the return is sent again.
    bool retried = false;
    for (;;) {
        try {
            if (retried)
                shiftOpen();
            settleReturn();
            return EContext::Continue;
        } catch (const ShiftClosedException &e) {
            if (retried) {
                showError(e);
                return EContext::Stop;
            }
            retried = true;
        } catch (const BasicException &e) {
            showError(e);
            return EContext::Stop;
        }
    }
}

void BackPlugin::settleReturn()
{
    // The answer to the last advice note of this document, if any: an unchanged
    // return is then not sent again.
    AdviceNoteResponse answer = AdviceNoteResponse::fromMap(getPluginData(AdviceNoteResponseKey).toMap());
    const QSharedPointer<AbstractDocument> document = getDocument();
    if (document && hostsdk::hasType(*document, {EDocumentType::Back}))
        answer = interface->adviceNote(qSharedPointerObjectCast<BackDocument>(document), getInvoiceInfo(), answer);
    else if (document && hostsdk::hasType(*document, {EDocumentType::BackBySale}))
        answer = interface->adviceNote(qSharedPointerObjectCast<BackBySaleDocument>(document), getInvoiceInfo(), answer);
    answer.checkStatus();

    const QString invoiceId = answer.key4();
    logger->info(QStringLiteral("Номер инвойса возврата: %1").arg(LineSanitizer::escaped(invoiceId)));
    setPluginData(QStringLiteral("invoiceIDRaw"), invoiceId);
    setPluginData(QStringLiteral("invoiceID"), QString(invoiceId).remove(QLatin1Char('/')));
    setPluginData(AdviceNoteResponseKey, answer.toMap());
    // The number and the answer must survive a restart of the till before the close.
    // The service has settled the return whatever the disk does, so the close
    // goes on; the answer stays on the document for the host's next save.
    if (!hostsdk::saveDocument(document))
        logger->error(QStringLiteral("Не удалось сохранить документ с номером инвойса возврата %1").arg(LineSanitizer::escaped(invoiceId)));
}

void BackPlugin::showError(const BasicException &e) const
{
    if (!e.tr().isEmpty())
        hostsdk::showMessage(e.tr(), Dialog::Information);
}

void BackPlugin::shiftOpen()
{
    logger->info(QStringLiteral("Открытие смены"));
    const DocumentFacade::CheckResult check = hostsdk::checkShiftOpen();
    if (check.failed)
        throw ShiftOpenException(check.message);

    const Response answer = interface->tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0);
    answer.checkStatus();

    StorageItem item;
    item.bindToCurrentShift();
    item.setName(QStringLiteral("tillOpen"));
    item.setValue(QString::fromUtf8(QJsonDocument(answer.jsonObject()).toJson(QJsonDocument::Indented)));
    // The till is open at the service whatever the store does; a lost record must not pass in silence.
    if (!hostsdk::saveStorageItem(item))
        logger->error(QStringLiteral("Не удалось сохранить запись смены tillOpen"));
}

} // namespace tessaro
