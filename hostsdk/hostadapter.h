#pragma once

// Every operation of the host SDK whose name the plug-in's authors had to
// guess (docs/host-interface.md marks them), in one place. The plug-in calls
// these and never the guessed names themselves: porting it to an SDK that
// spells an operation otherwise means editing this file only.
//
// Each function says what the plug-in relies on. Operations whose names the
// host documents (GoodsItem's getters, BasicLoyaltySystem, tr::Tr, ...) are
// called directly.

#include <abstractdocument.h>
#include <actionqueuecontroller.h>
#include <backbysaledocument.h>
#include <cashdrawer.h>
#include <config.h>
#include <contextmanager.h>
#include <control/args/core.h>
#include <dialog.h>
#include <dictionariesdao.h>
#include <documentfacade.h>
#include <documentlogic.h>
#include <documentsdao.h>
#include <frcollection.h>
#include <goodsitem.h>
#include <http/response.h>
#include <mockfactory.h>
#include <modifierscontainer.h>
#include <restclient.h>
#include <savetofilelogic.h>
#include <singleton.h>
#include <valutcollection.h>

namespace tessaro::hostsdk {

// --- Configuration: "Section:key" values of the host's Config; a missing key gives the default.

inline QString configString(const QString &key, const QString &defaultValue = QString())
{
    return Singleton<Config>::instance()->getString(key, defaultValue);
}

inline int configInt(const QString &key, int defaultValue = 0)
{
    return Singleton<Config>::instance()->getInt(key, defaultValue);
}

inline qint64 configLongLong(const QString &key, qint64 defaultValue = 0)
{
    return Singleton<Config>::instance()->getLongLong(key, defaultValue);
}

inline bool configBool(const QString &key, bool defaultValue = false)
{
    return Singleton<Config>::instance()->getBool(key, defaultValue);
}

// Comma-separated integers; pieces that are not integers are skipped.
inline QList<int> configIntList(const QString &key)
{
    return Singleton<Config>::instance()->getIntList(key);
}

inline QStringList configStringList(const QString &key, const QStringList &defaultValue = QStringList())
{
    return Singleton<Config>::instance()->getStringList(key, defaultValue);
}

inline bool configContains(const QString &key)
{
    return Singleton<Config>::instance()->contains(key);
}

// The key names of one section, in the file's order.
inline QStringList configKeys(const QString &section)
{
    return Singleton<Config>::instance()->keys(section);
}

// --- Action pipeline and context.

// Runs \a action at once through the host's pipeline and gives its result.
inline EContext::Result runAction(const control::Action &action)
{
    return Singleton<ActionQueueController>::instance()->runAction(action);
}

// Queues \a action after the running one; \a first puts it before any other queued action.
inline void queueAction(const control::Action &action, bool first)
{
    Singleton<ActionQueueController>::instance()->addAction(action, first);
}

inline bool isCurrentContext(EContext::Code context)
{
    return Singleton<ContextManager>::instance()->isCurrentContext(context);
}

// How the action's position argument was given: 1 by position number.
inline int positionKind(const control::args::Core &arguments)
{
    return arguments.kind();
}

// The value of one of the session's input modifiers: Price a double, Quantity a Quantity.
inline QVariant modifierValue(const ModifiersContainer &modifiers, modifiers::Type type)
{
    return modifiers.getValue(type);
}

// --- Documents and positions.

inline bool hasType(const AbstractDocument &document, const QList<int> &types)
{
    return document.hasType(types);
}

inline QVariant documentProperty(const AbstractDocument &document, const QString &name,
                                 const QVariant &defaultValue = QVariant())
{
    return document.getDocumentProperty(name, defaultValue);
}

// Kept with the document wherever the host stores it.
inline void setDocumentProperty(AbstractDocument &document, const QString &name, const QVariant &value)
{
    document.setDocumentProperty(name, value);
}

inline QList<QSharedPointer<GoodsItem>> positions(const AbstractDocument &document)
{
    return document.getGoodsItems();
}

inline QSharedPointer<GoodsItem> positionByNumber(const AbstractDocument &document, int number)
{
    return document.getGoodsItemByPosnum(number);
}

inline QList<QSharedPointer<MoneyItem>> payments(const AbstractDocument &document)
{
    return document.getMoneyItems();
}

inline QList<QSharedPointer<DocumentImpact>> impacts(const AbstractDocument &document)
{
    return document.getImpacts();
}

// The document's card of \a cardType, or null.
inline QSharedPointer<DocumentCardRecord> cardRecord(const AbstractDocument &document, int cardType)
{
    return document.getCardRecord(cardType);
}

// The return reason chosen for the whole document: a reason code, or null when none is.
inline QVariant commonBackReason(const AbstractDocument &document)
{
    return document.getCommonBackReason();
}

inline void setCommonBackReason(AbstractDocument &document, const QVariant &reason)
{
    document.setCommonBackReason(reason);
}

// Which of the host's reason dictionaries the document's return reasons come from.
inline int backReasonDictionaryKind(const AbstractDocument &document)
{
    return document.getBackReasonDictionaryKind();
}

// What the document's own rounding took off its total.
inline double roundingSum(const AbstractDocument &document)
{
    return document.getRoundingSum();
}

// Tells the host that the plug-in changed the document, so that it shows and keeps the change.
inline void markChanged(AbstractDocument &document)
{
    document.markChanged();
}

// The code of the store the document belongs to.
inline QString documentShopCode(const AbstractDocument &document)
{
    return document.getShopCode();
}

// The identifier of the sale a return by sale refers to, as the cashier entered or scanned it.
inline QString saleIdentifier(const BackBySaleDocument &document)
{
    return document.getSaleIdentifier();
}

// The sale document a return by sale refers to, when the host has it.
inline QSharedPointer<AbstractDocument> sourceDocument(const BackBySaleDocument &document)
{
    return document.getSourceDocument();
}

// A position's value of \a key in the namespace \a section, kept with the position.
inline QVariant additionalData(const GoodsItem &position, const QString &section, const QString &key)
{
    return position.getAdditionalData(section, key);
}

inline void setAdditionalData(GoodsItem &position, const QString &section, const QString &key, const QVariant &value)
{
    position.setAdditionalData(section, key, value);
}

// --- Document operations.

// Has the cashier choose the document's common return reason; false when the cashier declined.
inline bool chooseCommonBackReason(const QSharedPointer<AbstractDocument> &document)
{
    return MockFactory<DocumentLogic>::create()->chooseCommonBackReason(document, {});
}

// Saves the whole document where the host keeps documents; false when that failed.
inline bool saveDocument(const QSharedPointer<AbstractDocument> &document)
{
    return MockFactory<SaveToFileLogic>::create()->save(document, {});
}

// Whether the host would open a shift now, and its message when it would not.
inline DocumentFacade::CheckResult checkShiftOpen()
{
    return Singleton<DocumentFacade>::instance()->checkShiftOpen({});
}

// --- Till, storage and dictionaries.

// The amount in the cash drawer.
inline double cashDrawerAmount()
{
    return MockFactory<CashDrawer>::create()->getAmount();
}

// Keeps \a item in the host's store; false when that failed.
inline bool saveStorageItem(const StorageItem &item)
{
    return Singleton<DocumentsDao>::instance()->saveStorageItem(item);
}

// The total of payment type \a paymentType taken in shift \a shift.
inline QVariant paymentTotal(int paymentType, int shift)
{
    return Singleton<DocumentsDao>::instance()->getPaymentTotal(paymentType, shift);
}

inline QList<DictionariesDao::BackReason> backReasons(int dictionaryKind)
{
    return Singleton<DictionariesDao>::instance()->getBackReasons(dictionaryKind);
}

// The codes of every payment type the till knows.
inline QList<int> paymentTypeCodes()
{
    return Singleton<ValutCollection>::instance()->getValutCodes();
}

inline qint64 fiscalRegistrationNumber()
{
    return Singleton<FrCollection>::instance()->getRegistrationNumber();
}

inline QString fiscalDriveSerial()
{
    return Singleton<FrCollection>::instance()->getFiscalDriveSerial();
}

// --- Dialogs: each blocks until the cashier answered or it timed out.

// A message of Dialog::Information or Dialog::Error; a time-out of 0 waits for the cashier.
inline void showMessage(const tr::Tr &message, Dialog::Kind kind, int timeout = 0)
{
    MockFactory<Dialog>::create()->showMessage(message, kind, timeout);
}

// The index of the item the cashier chose, or -1.
inline int showChoice(const tr::Tr &title, const QStringList &items)
{
    return MockFactory<Dialog>::create()->showChoice(title, items);
}

// A progress window, open until the last copy of the pointer goes.
inline QSharedPointer<SimpleProgress> showProgress(const tr::Tr &message)
{
    return MockFactory<Dialog>::create()->showProgress(message);
}

// --- HTTP: blocking exchanges of the host's client; the answer is read with lastResponse.

inline void setTimeout(RestClient &client, int milliseconds)
{
    client.setTimeout(milliseconds);
}

// Headers whose values the client never writes to its log.
inline void setSecretHeaders(RestClient &client, const QStringList &names)
{
    client.setSecretHeaders(names);
}

// The time-out in force, in milliseconds, after the host's own bounds.
inline int timeout(const RestClient &client)
{
    return client.timeout();
}

// The longest time-out the host's transport allows; longer ones are cut to it.
inline int longestTimeout(const RestClient &client)
{
    return client.longestTimeout();
}

// Whether the exchanges that follow may go once more on a fresh connection
// when a kept-alive one died before any answer byte: set only around requests
// that change nothing at the service (the token request).
inline void setRepeatable(RestClient &client, bool repeatable)
{
    client.setRepeatable(repeatable);
}

inline bool get(RestClient &client, const QUrl &url, const RestClient::Headers &headers)
{
    return client.get(url, QJsonDocument(), headers);
}

inline bool postRaw(RestClient &client, const QUrl &url, const QByteArray &body, const RestClient::Headers &headers)
{
    return client.postRaw(url, body, headers);
}

inline http::Response lastResponse(const RestClient &client)
{
    return client.lastResponse();
}

// The answer's HTTP status code, 0 when none came.
inline int httpCode(const http::Response &response)
{
    return response.httpCode();
}

// The transport's error code, 0 when the exchange went through.
inline int errorCode(const http::Response &response)
{
    return response.errorCode();
}

} // namespace tessaro::hostsdk
