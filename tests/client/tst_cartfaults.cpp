// The recovery of a cart update whose answer is lost, against the service
// emulator's faults. The emulator's journal and cart show that the cart holds
// every update exactly once.
#include "cartemulatorbed.h"

#include "client/interface.h"

#include <goodsitem.h>
#include <testing/scripteddialog.h>

#include <QJsonArray>
#include <QTest>

using tessaro::CartUpdateResponse;
using tessaro::emulator::Fault;
using tessaro::emulator::JournalEntry;

namespace {

QSharedPointer<GoodsItem> scanned(const QString &barcode)
{
    const auto item = QSharedPointer<GoodsItem>::create();
    item->setBarcode(barcode);
    item->setInputRawData(barcode);
    return item;
}

// The client's cart identifier, a new cart on the emulator.
QString newCart(tessaro::Interface &client)
{
    const QString uuid = client.cartCreate().uuid();
    if (uuid.isEmpty())
        qFatal("the emulator created no cart");
    return uuid;
}

QString updatePath(const QString &uuid)
{
    return QStringLiteral("/cart/%1/update").arg(uuid);
}

QString cartPath(const QString &uuid)
{
    return QStringLiteral("/cart/%1").arg(uuid);
}

CartUpdateResponse addMilk(tessaro::Interface &client, const QString &uuid)
{
    tessaro::PositionData position;
    return client.addItemToCart(uuid, scanned(CartEmulatorBed::milkBarcode), position, true);
}

// The result is the cart as the service holds it.
bool isServiceCart(CartEmulatorBed &bed, const QString &uuid, const CartUpdateResponse &result)
{
    return result.jsonObject().value("items") == bed.cart(uuid).toJson().value("items");
}

} // namespace

class TestCartFaults : public QObject
{
    Q_OBJECT

private slots:
    void answerLostAfterApplyIsNotResent();
    void updateLostBeforeApplyIsResentOnce();
    void failedReadBacksAreShownThenTheRightOutcome();
    void conflictOnResendLeadsToAnotherReadBack();
    void laterUpdateLostAfterApplyIsTheReadBack();
    void laterUpdateLostBeforeApplyIsResent();
};

void TestCartFaults::answerLostAfterApplyIsNotResent()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString uuid = newCart(client);
    bed.emulator().faults().add(Fault(Fault::Kind::CloseAfterApply, updatePath(uuid)));

    const CartUpdateResponse result = addMilk(client, uuid);
    QCOMPARE(bed.received(QStringLiteral("/update")), 1);
    QCOMPARE(bed.applied(QStringLiteral("/update")), 1);
    QCOMPARE(bed.received(cartPath(uuid)), 1);
    QCOMPARE(bed.cart(uuid).lines().size(), 1);
    QCOMPARE(result.items().size(), 1);
    QCOMPARE(result.items().first().name(), QStringLiteral("Молоко 1 л"));
    QVERIFY(isServiceCart(bed, uuid, result));
    QVERIFY(bed.host().dialog()->messages().isEmpty());
}

void TestCartFaults::updateLostBeforeApplyIsResentOnce()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString uuid = newCart(client);
    bed.emulator().faults().add(Fault(Fault::Kind::CloseBeforeApply, updatePath(uuid)));

    const CartUpdateResponse result = addMilk(client, uuid);
    const QList<JournalEntry> updates = bed.emulator().journal().entriesFor(QStringLiteral("/update"));
    QCOMPARE(updates.size(), 2);
    QCOMPARE(updates.at(0).outcome, JournalEntry::Outcome::Closed);
    QCOMPARE(updates.at(1).outcome, JournalEntry::Outcome::Answered);
    QCOMPARE(updates.at(1).exchange.jsonObject(), updates.at(0).exchange.jsonObject());
    QCOMPARE(bed.applied(QStringLiteral("/update")), 1);
    QCOMPARE(bed.received(cartPath(uuid)), 1);
    QCOMPARE(bed.cart(uuid).lines().size(), 1);
    QVERIFY(isServiceCart(bed, uuid, result));
}

void TestCartFaults::failedReadBacksAreShownThenTheRightOutcome()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString uuid = newCart(client);
    bed.emulator().faults().add(Fault(Fault::Kind::CloseAfterApply, updatePath(uuid)));
    Fault readBack(Fault::Kind::CloseBeforeApply, cartPath(uuid), 2);
    readBack.method = "GET";
    bed.emulator().faults().add(readBack);

    const CartUpdateResponse result = addMilk(client, uuid);
    const QStringList shown = bed.host().dialog()->messageIds();
    QCOMPARE(shown, (QStringList{QStringLiteral("tessaroConnectionError"), QStringLiteral("tessaroConnectionError")}));
    QCOMPARE(bed.received(cartPath(uuid)), 3);
    QCOMPARE(bed.received(QStringLiteral("/update")), 1);
    QCOMPARE(bed.applied(QStringLiteral("/update")), 1);
    QCOMPARE(bed.cart(uuid).lines().size(), 1);
    QVERIFY(isServiceCart(bed, uuid, result));
}

void TestCartFaults::conflictOnResendLeadsToAnotherReadBack()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString uuid = newCart(client);
    bed.emulator().faults().add(Fault(Fault::Kind::CloseBeforeApply, updatePath(uuid)));
    bed.emulator().faults().add(Fault(Fault::Kind::Status3001, updatePath(uuid)));

    const CartUpdateResponse result = addMilk(client, uuid);
    QCOMPARE(result.status(), tessaro::Response::Success);
    QCOMPARE(result.statusCode(), 0);
    const QList<JournalEntry> updates = bed.emulator().journal().entriesFor(QStringLiteral("/update"));
    QCOMPARE(updates.size(), 3);
    QCOMPARE(updates.at(1).fault, QStringLiteral("status-3001"));
    QCOMPARE(bed.received(cartPath(uuid)), 2);
    QCOMPARE(bed.applied(QStringLiteral("/update")), 1);
    QCOMPARE(bed.cart(uuid).lines().size(), 1);
    QVERIFY(isServiceCart(bed, uuid, result));
}

void TestCartFaults::laterUpdateLostAfterApplyIsTheReadBack()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString uuid = newCart(client);
    addMilk(client, uuid);
    bed.emulator().faults().add(Fault(Fault::Kind::CloseAfterApply, updatePath(uuid)));

    const CartUpdateResponse result = client.quantityOverwrite(uuid, 1, 3, tessaro::Interface::NoDeleteReason);
    QCOMPARE(bed.received(QStringLiteral("/update")), 2);
    QCOMPARE(bed.applied(QStringLiteral("/update")), 2);
    QCOMPARE(result.items().first().quantity(), 3.0);
    QCOMPARE(bed.cart(uuid).lines().first().quantity, 3.0);
    QVERIFY(isServiceCart(bed, uuid, result));
}

void TestCartFaults::laterUpdateLostBeforeApplyIsResent()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString uuid = newCart(client);
    addMilk(client, uuid);
    bed.emulator().faults().add(Fault(Fault::Kind::CloseBeforeApply, updatePath(uuid)));

    const CartUpdateResponse result = addMilk(client, uuid);
    QCOMPARE(bed.received(QStringLiteral("/update")), 3);
    QCOMPARE(bed.applied(QStringLiteral("/update")), 2);
    QCOMPARE(bed.cart(uuid).lines().size(), 2);
    QCOMPARE(result.items().size(), 2);
    QVERIFY(isServiceCart(bed, uuid, result));
}

QTEST_GUILESS_MAIN(TestCartFaults)
#include "tst_cartfaults.moc"
