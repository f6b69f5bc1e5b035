#include "responses/positiondata.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QTest>

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
