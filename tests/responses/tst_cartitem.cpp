#include "cartaccessorrows.h"

#include "responses/item.h"

#include <QJsonArray>
#include <QTest>

using tessaro::Item;
using Rows = CartAccessorRows<Item>;

namespace {

QJsonObject prices(const QJsonObject &values)
{
    return {{QStringLiteral("prices"), values}};
}

Item itemWith(double quantity, double totalPriceGross)
{
    return Item(QJsonObject{{QStringLiteral("quantity"), quantity},
                            {QStringLiteral("prices"), QJsonObject{{QStringLiteral("totalPriceGross"), totalPriceGross}}}});
}

} // namespace

class TestCartItem : public QObject
{
    Q_OBJECT

private slots:
    void accessors_data();
    void accessors() { Rows::check(); }
    void nestedPrices_data();
    void nestedPrices() { Rows::check(); }
    void unitPrice_data();
    void unitPrice();
    void tinyQuantityHasNoUnitPrice();
    void emptyCouponNumbersAreLeftOut();
    void onlyTheFirstTraceabilityRecordCounts();
    void emptyTraceabilityGivesNoRecord();
    void traceabilityIgnoresUnknownKeys();
};

void TestCartItem::accessors_data()
{
    Rows::addColumns();
    Rows::add("name", &Item::name, QStringLiteral("artName"), QStringLiteral("Молоко"), QStringLiteral("Молоко"), 1, QString());
    Rows::add("artNo", &Item::artNo, QStringLiteral("artNo"), QStringLiteral("A-17"), QStringLiteral("A-17"),
              QJsonObject{{QStringLiteral("a"), 1}}, QString());
    Rows::addRow("artNo", "number", &Item::artNo, QJsonObject{{QStringLiteral("artNo"), 1000000000}},
                 QStringLiteral("1000000000"));
    Rows::add("quantity", &Item::quantity, QStringLiteral("quantity"), 2.5, 2.5, QStringLiteral("2"), 0.0);
    Rows::add("sequenceNumber", &Item::sequenceNumber, QStringLiteral("sequenceNumber"), 3, 3, QStringLiteral("3"), 0);
    const QJsonArray coupons{QJsonObject{{QStringLiteral("couponNo"), QStringLiteral("2551")}},
                             QJsonObject{{QStringLiteral("couponNo"), QStringLiteral("2552")}}};
    Rows::add("coupons", &Item::coupons, QStringLiteral("dnr"), coupons,
              QStringList{QStringLiteral("2551"), QStringLiteral("2552")}, QStringLiteral("2551"), QStringList());
    Rows::add("getPriceForItem", &Item::getPriceForItem, QStringLiteral("quantity"), 2, 0.0, QStringLiteral("2"), 0.0);
}

void TestCartItem::nestedPrices_data()
{
    Rows::addColumns();
    const QString gross = QStringLiteral("totalPriceGross");
    const QString discount = QStringLiteral("totalDiscountGross");
    Rows::addRow("totalPriceGross", "present", &Item::totalPriceGross, prices({{gross, 99.9}}), 99.9);
    Rows::addRow("totalPriceGross", "missing level", &Item::totalPriceGross, QJsonObject{{gross, 99.9}}, 0.0);
    Rows::addRow("totalPriceGross", "mistyped level", &Item::totalPriceGross,
                 QJsonObject{{QStringLiteral("prices"), QJsonArray{99.9}}}, 0.0);
    Rows::addRow("totalPriceGross", "mistyped", &Item::totalPriceGross, prices({{gross, QStringLiteral("99.9")}}), 0.0);
    Rows::addRow("totalDiscountGross", "present", &Item::totalDiscountGross, prices({{discount, 5.5}}), 5.5);
    Rows::addRow("totalDiscountGross", "missing", &Item::totalDiscountGross, prices({{gross, 1}}), 0.0);
    Rows::addRow("totalDiscountGross", "mistyped", &Item::totalDiscountGross, prices({{discount, true}}), 0.0);
}

void TestCartItem::unitPrice_data()
{
    QTest::addColumn<double>("quantity");
    QTest::addColumn<double>("total");
    QTest::addColumn<double>("expected");
    QTest::newRow("a third, down") << 3.0 << 10.0 << 3.33;
    QTest::newRow("a negative third, toward zero") << 3.0 << -10.0 << -3.33;
    QTest::newRow("half a cent, away from zero") << 2.0 << 0.01 << 0.01;
    QTest::newRow("binary half cent") << 1.0 << 0.285 << 0.29;
    QTest::newRow("negative half cent") << 2.0 << -0.01 << -0.01;
    QTest::newRow("two thirds, up") << 3.0 << 20.0 << 6.67;
    QTest::newRow("zero total") << 2.0 << 0.0 << 0.0;
    // Beyond 64 bits of hundredths a double is a whole number: nothing to round.
    QTest::newRow("too large for 64 bits") << 1.0 << 1.5e27 << 1.5e27;
    QTest::newRow("too large for 64 bits, negative") << 1.0 << -1.5e27 << -1.5e27;
    QTest::newRow("largest whole double that fits") << 1.0 << 9.0e16 << 9.0e16;
    QTest::newRow("infinite") << 0.5 << 1.7e308 << qInf();
}

void TestCartItem::unitPrice()
{
    QFETCH(double, quantity);
    QFETCH(double, total);
    QFETCH(double, expected);
    QCOMPARE(itemWith(quantity, total).getPriceForItem(), expected);
}

void TestCartItem::tinyQuantityHasNoUnitPrice()
{
    QCOMPARE(itemWith(0.0004, 10).getPriceForItem(), 0.0);
    QCOMPARE(itemWith(-0.0004, 10).getPriceForItem(), 0.0);
    QCOMPARE(itemWith(0.0005, 0.01).getPriceForItem(), 20.0);
}

void TestCartItem::emptyCouponNumbersAreLeftOut()
{
    const QJsonArray dnr{QJsonObject{{QStringLiteral("couponNo"), QStringLiteral("2551")}},
                         QJsonObject{{QStringLiteral("couponNo"), QString()}},
                         QJsonObject{{QStringLiteral("discount"), 5}},
                         QJsonObject{{QStringLiteral("couponNo"), QStringLiteral("2553")}}};
    QCOMPARE(Item(QJsonObject{{QStringLiteral("dnr"), dnr}}).coupons(),
             (QStringList{QStringLiteral("2551"), QStringLiteral("2553")}));
}

void TestCartItem::onlyTheFirstTraceabilityRecordCounts()
{
    const QJsonArray records{QJsonObject{{QStringLiteral("cdn"), QStringLiteral("first")},
                                         {QStringLiteral("gtin"), QStringLiteral("0460")}},
                             QJsonObject{{QStringLiteral("cdn"), QStringLiteral("second")},
                                         {QStringLiteral("lotNumber"), QStringLiteral("L2")}}};
    const std::optional<orvel::Traceability> record = Item(QJsonObject{{QStringLiteral("traceability"), records}}).traceability();
    QVERIFY(record.has_value());
    QCOMPARE(record->cdn, QStringLiteral("first"));
    QCOMPARE(record->gtin, QStringLiteral("0460"));
    QVERIFY(record->lotNumber.isEmpty());
}

void TestCartItem::emptyTraceabilityGivesNoRecord()
{
    QVERIFY(!Item(QJsonObject{{QStringLiteral("traceability"), QJsonArray()}}).traceability().has_value());
    QVERIFY(!Item(QJsonObject{{QStringLiteral("artNo"), 1}}).traceability().has_value());
    QVERIFY(!Item(QJsonObject{{QStringLiteral("traceability"), QJsonObject{{QStringLiteral("cdn"), QStringLiteral("x")}}}})
                 .traceability()
                 .has_value());
}

void TestCartItem::traceabilityIgnoresUnknownKeys()
{
    const QJsonObject record{{QStringLiteral("serialNumber"), QStringLiteral("S1")},
                             {QStringLiteral("unknownField"), QStringLiteral("u")}};
    const std::optional<orvel::Traceability> read = Item(QJsonObject{{QStringLiteral("traceability"), QJsonArray{record}}}).traceability();
    orvel::Traceability expected;
    expected.serialNumber = QStringLiteral("S1");
    QVERIFY(read.has_value());
    QCOMPARE(*read, expected);
}

QTEST_GUILESS_MAIN(TestCartItem)
#include "tst_cartitem.moc"
