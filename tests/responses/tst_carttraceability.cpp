#include "responses/traceability.h"

#include <QMetaProperty>
#include <QTest>

using orvel::Traceability;

namespace {

Traceability filled()
{
    Traceability record;
    record.cdn = QStringLiteral("cdn-1");
    record.cdnOrig = QStringLiteral("0123ABC45");
    record.fz1162Field = QStringLiteral("444D");
    record.alcoMarkField = QStringLiteral("22N0000");
    record.barcodeField = QStringLiteral("4601234567890");
    record.serialNumber = QStringLiteral("S-9");
    record.lotNumber = QStringLiteral("L-3");
    record.gtin = QStringLiteral("04601234567890");
    return record;
}

} // namespace

class TestCartTraceability : public QObject
{
    Q_OBJECT

private slots:
    void propertiesInOrder();
    void defaultIsEmpty();
    void cdnOrigInt_data();
    void cdnOrigInt();
    void registeredByName();
    void variantRoundTrip();
    void mapRoundTrip();
    void variantOfMapConverts();
    void fromMapIgnoresUnknownAndKeepsMissingEmpty();
    void valueThatIsNoTextKeepsEmpty_data();
    void valueThatIsNoTextKeepsEmpty();
};

void TestCartTraceability::propertiesInOrder()
{
    const QMetaObject &meta = Traceability::staticMetaObject;
    const QStringList expected{QStringLiteral("cdn"), QStringLiteral("cdnOrig"), QStringLiteral("fz1162Field"),
                               QStringLiteral("alcoMarkField"), QStringLiteral("barcodeField"),
                               QStringLiteral("serialNumber"), QStringLiteral("lotNumber"), QStringLiteral("gtin")};
    QStringList names;
    for (int i = 0; i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        QCOMPARE(property.metaType(), QMetaType::fromType<QString>());
        QVERIFY(property.isReadable() && property.isWritable());
        names << QString::fromLatin1(property.name());
    }
    QCOMPARE(names, expected);
}

void TestCartTraceability::defaultIsEmpty()
{
    const QVariantMap map = Traceability().toMap();
    QCOMPARE(map.size(), 8);
    for (const QVariant &value : map)
        QVERIFY(value.toString().isEmpty());
}

void TestCartTraceability::cdnOrigInt_data()
{
    QTest::addColumn<QString>("cdnOrig");
    QTest::addColumn<int>("expected");
    QTest::newRow("digits then letters") << QStringLiteral("0123ABC45") << 123;
    QTest::newRow("letters first") << QStringLiteral("ABC") << 0;
    QTest::newRow("too large for 32 bits") << QStringLiteral("12345678901") << 0;
    QTest::newRow("largest int") << QStringLiteral("2147483647") << 2147483647;
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("only digits") << QStringLiteral("42") << 42;
    QTest::newRow("sign is not a digit") << QStringLiteral("-42") << 0;
    QTest::newRow("blank first") << QStringLiteral(" 42") << 0;
    QTest::newRow("non-ASCII digit stops") << QStringLiteral("12\u0663") << 12;
}

void TestCartTraceability::cdnOrigInt()
{
    QFETCH(QString, cdnOrig);
    QFETCH(int, expected);
    Traceability record;
    record.cdnOrig = cdnOrig;
    QCOMPARE(record.cdnOrigInt(), expected);
}

void TestCartTraceability::registeredByName()
{
    const QMetaType type = QMetaType::fromName("orvel::Traceability");
    QVERIFY(type.isValid());
    QCOMPARE(type, QMetaType::fromType<Traceability>());
    QCOMPARE(type.metaObject(), &Traceability::staticMetaObject);
}

void TestCartTraceability::variantRoundTrip()
{
    const QVariant variant = QVariant::fromValue(filled());
    QCOMPARE(variant.typeName(), "orvel::Traceability");
    QCOMPARE(variant.value<Traceability>(), filled());
    QVERIFY(variant == QVariant::fromValue(filled()));
    QVERIFY(variant != QVariant::fromValue(Traceability()));
}

void TestCartTraceability::mapRoundTrip()
{
    const QVariantMap map = filled().toMap();
    QCOMPARE(map.value(QStringLiteral("cdnOrig")).toString(), QStringLiteral("0123ABC45"));
    QCOMPARE(map.value(QStringLiteral("fz1162Field")).toString(), QStringLiteral("444D"));
    QCOMPARE(Traceability::fromMap(map), filled());
}

void TestCartTraceability::variantOfMapConverts()
{
    const QVariant asMap(filled().toMap());
    QVERIFY(asMap.canConvert<Traceability>());
    QCOMPARE(asMap.value<Traceability>(), filled());
    QCOMPARE(QVariant::fromValue(filled()).toMap(), filled().toMap());
}

void TestCartTraceability::fromMapIgnoresUnknownAndKeepsMissingEmpty()
{
    const Traceability record = Traceability::fromMap(
        {{QStringLiteral("gtin"), QStringLiteral("0460")}, {QStringLiteral("color"), QStringLiteral("red")}});
    Traceability expected;
    expected.gtin = QStringLiteral("0460");
    QCOMPARE(record, expected);
}

void TestCartTraceability::valueThatIsNoTextKeepsEmpty_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("gtin");
    QTest::newRow("text") << QVariant(QStringLiteral("0460")) << "0460";
    QTest::newRow("whole number") << QVariant(qlonglong(4601234567890)) << "4601234567890";
    QTest::newRow("NaN") << QVariant(qQNaN()) << "";
    QTest::newRow("infinity") << QVariant(qInf()) << "";
    QTest::newRow("list") << QVariant(QVariantList{QStringLiteral("0460")}) << "";
    QTest::newRow("map") << QVariant(QVariantMap{{QStringLiteral("gtin"), QStringLiteral("0460")}}) << "";
}

void TestCartTraceability::valueThatIsNoTextKeepsEmpty()
{
    QFETCH(QVariant, value);
    QFETCH(QString, gtin);
    QCOMPARE(Traceability::fromMap({{QStringLiteral("gtin"), value}}).gtin, gtin);
}

QTEST_GUILESS_MAIN(TestCartTraceability)
#include "tst_carttraceability.moc"
