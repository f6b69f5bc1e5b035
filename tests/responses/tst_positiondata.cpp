#include "responses/positiondata.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QTest>

#include <limits>

using tessaro::PositionData;

namespace {

PositionData filled()
{
    PositionData data;
    data.artNo = QStringLiteral("A-17");
    data.sequenceNumber = 3;
    data.priceModifyReason = 2;
    data.targetPrice = 99.5;
    data.wholeLine = true;
    data.eanReason = 4;
    data.blockStatusCode = 1;
    data.blockActorCode = QStringLiteral("1005");
    return data;
}

} // namespace

class TestPositionData : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void propertiesInOrder();
    void registeredByName();
    void variantRoundTrip();
    void mapRoundTrip();
    void mapWithoutEanReasonKeepsNone();
    void fromMap_data();
    void fromMap();
    void storedFormSurvivesJson();
};

void TestPositionData::defaults()
{
    const PositionData data;
    QVERIFY(data.artNo.isEmpty());
    QCOMPARE(data.sequenceNumber, -1);
    QCOMPARE(data.priceModifyReason, 0);
    QCOMPARE(data.targetPrice, 0.0);
    QCOMPARE(data.wholeLine, false);
    QCOMPARE(data.eanReason, -1);
    QCOMPARE(data.blockStatusCode, -1);
    QVERIFY(data.blockActorCode.isEmpty());
}

void TestPositionData::propertiesInOrder()
{
    const QMetaObject &meta = PositionData::staticMetaObject;
    const QList<QPair<QByteArray, QMetaType>> expected{
        {"artNo", QMetaType::fromType<QString>()},       {"sequenceNumber", QMetaType::fromType<int>()},
        {"priceModifyReason", QMetaType::fromType<int>()}, {"targetPrice", QMetaType::fromType<double>()},
        {"wholeLine", QMetaType::fromType<bool>()},      {"eanReason", QMetaType::fromType<int>()},
        {"blockStatusCode", QMetaType::fromType<int>()}, {"blockActorCode", QMetaType::fromType<QString>()},
    };
    QCOMPARE(meta.propertyCount(), expected.size());
    for (int i = 0; i < meta.propertyCount(); ++i) {
        QCOMPARE(QByteArray(meta.property(i).name()), expected.at(i).first);
        QCOMPARE(meta.property(i).metaType(), expected.at(i).second);
        QVERIFY(meta.property(i).isWritable());
    }
}

void TestPositionData::registeredByName()
{
    const QMetaType type = QMetaType::fromName("tessaro::PositionData");
    QVERIFY(type.isValid());
    QCOMPARE(type, QMetaType::fromType<PositionData>());
}

void TestPositionData::variantRoundTrip()
{
    const QVariant variant = QVariant::fromValue(filled());
    QCOMPARE(variant.typeName(), "tessaro::PositionData");
    QCOMPARE(variant.value<PositionData>(), filled());
    QVERIFY(variant == QVariant::fromValue(filled()));
    QVERIFY(variant != QVariant::fromValue(PositionData()));
}

void TestPositionData::mapRoundTrip()
{
    const QVariantMap map = filled().toMap();
    QCOMPARE(map.size(), 8);
    QCOMPARE(map.value(QStringLiteral("eanReason")), QVariant(4));
    QCOMPARE(map.value(QStringLiteral("blockActorCode")), QVariant(QStringLiteral("1005")));
    QCOMPARE(PositionData::fromMap(map), filled());
    QCOMPARE(QVariant(map).value<PositionData>(), filled());
    QCOMPARE(QVariant::fromValue(filled()).toMap(), map);
}

void TestPositionData::mapWithoutEanReasonKeepsNone()
{
    QVariantMap map = filled().toMap();
    map.remove(QStringLiteral("eanReason"));
    const PositionData data = PositionData::fromMap(map);
    QCOMPARE(data.eanReason, -1);
    QCOMPARE(data.artNo, QStringLiteral("A-17"));
}

void TestPositionData::fromMap_data()
{
    QTest::addColumn<QVariantMap>("map");
    QTest::addColumn<PositionData>("expected");
    PositionData sequence;
    sequence.sequenceNumber = 7;
    QTest::newRow("one key") << QVariantMap{{QStringLiteral("sequenceNumber"), 7}} << sequence;
    QTest::newRow("number as text converts") << QVariantMap{{QStringLiteral("sequenceNumber"), QStringLiteral("7")}}
                                             << sequence;
    QTest::newRow("unknown names ignored") << QVariantMap{{QStringLiteral("colour"), 1}} << PositionData();
    QTest::newRow("unconvertible keeps default")
        << QVariantMap{{QStringLiteral("eanReason"), QStringLiteral("none")}} << PositionData();
    QTest::newRow("null keeps default") << QVariantMap{{QStringLiteral("eanReason"), QVariant::fromValue(nullptr)}}
                                        << PositionData();
    QTest::newRow("empty") << QVariantMap() << PositionData();

    // A value that does not fit the property's type keeps the default instead
    // of wrapping or rounding into another valid-looking value.
    PositionData reason;
    reason.eanReason = 3;
    QTest::newRow("whole number as double converts") << QVariantMap{{QStringLiteral("eanReason"), 3.0}} << reason;
    QTest::newRow("largest int converts")
        << QVariantMap{{QStringLiteral("eanReason"), qlonglong(std::numeric_limits<int>::max())}}
        << [] { PositionData d; d.eanReason = std::numeric_limits<int>::max(); return d; }();
    QTest::newRow("double beyond int") << QVariantMap{{QStringLiteral("sequenceNumber"), 1e12}} << PositionData();
    QTest::newRow("64-bit integer beyond int")
        << QVariantMap{{QStringLiteral("sequenceNumber"), qlonglong(1000000000000)}} << PositionData();
    QTest::newRow("just below int") << QVariantMap{{QStringLiteral("blockStatusCode"), qlonglong(-2147483649)}}
                                    << PositionData();
    QTest::newRow("text beyond int") << QVariantMap{{QStringLiteral("sequenceNumber"), QStringLiteral("99999999999")}}
                                     << PositionData();
    QTest::newRow("fraction") << QVariantMap{{QStringLiteral("eanReason"), 3.7}} << PositionData();
    QTest::newRow("fraction as text") << QVariantMap{{QStringLiteral("eanReason"), QStringLiteral("3.7")}}
                                      << PositionData();
    QTest::newRow("NaN for an integer") << QVariantMap{{QStringLiteral("priceModifyReason"), qQNaN()}}
                                        << PositionData();
    QTest::newRow("NaN price") << QVariantMap{{QStringLiteral("targetPrice"), qQNaN()}} << PositionData();
    QTest::newRow("infinite price") << QVariantMap{{QStringLiteral("targetPrice"), -qInf()}} << PositionData();
    QTest::newRow("infinite price as text") << QVariantMap{{QStringLiteral("targetPrice"), QStringLiteral("inf")}}
                                            << PositionData();
    QTest::newRow("NaN as the article") << QVariantMap{{QStringLiteral("artNo"), qQNaN()}} << PositionData();
    PositionData price;
    price.targetPrice = 12.5;
    QTest::newRow("price as text converts") << QVariantMap{{QStringLiteral("targetPrice"), QStringLiteral("12.5")}}
                                            << price;
}

void TestPositionData::fromMap()
{
    QFETCH(QVariantMap, map);
    QFETCH(PositionData, expected);
    QCOMPARE(PositionData::fromMap(map), expected);
}

void TestPositionData::storedFormSurvivesJson()
{
    // Positions are saved as JSON: integers come back as 64-bit numbers.
    const QJsonObject json = QJsonObject::fromVariantMap(filled().toMap());
    const QVariantMap back = QJsonDocument::fromJson(QJsonDocument(json).toJson()).object().toVariantMap();
    QCOMPARE(PositionData::fromMap(back), filled());
}

QTEST_GUILESS_MAIN(TestPositionData)
#include "tst_positiondata.moc"
