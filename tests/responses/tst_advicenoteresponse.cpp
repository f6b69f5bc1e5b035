#include "responses/advicenoteresponse.h"

#include <http/response.h>

#include <QJsonDocument>
#include <QMetaProperty>
#include <QTest>

using tessaro::AdviceNoteResponse;
using tessaro::Response;

namespace {

AdviceNoteResponse answer(const QByteArray &body, const QString &digest = QString())
{
    http::Response reply;
    reply.setHttpCode(200);
    reply.setUrl(QUrl(QStringLiteral("http://tessaro.test/advicenote")));
    reply.setBody(body);
    AdviceNoteResponse response{Response(reply)};
    response.requestHashSum = digest;
    return response;
}

const QByteArray body = R"({"uuid":"r-1","Key4":"000012000345"})";
const QString digest = QStringLiteral("0cc175b9c0f1b6a831c399e269772661");

} // namespace

class TestAdviceNoteResponse : public QObject
{
    Q_OBJECT

private slots:
    void accessors_data();
    void accessors();
    void capitalisedKey4Wins();
    void equalityIgnoresTheDigest();
    void equalityComparesTheReply();
    void defaultHasNoDigest();
    void copiesTheWholeBase();
    void propertiesByName();
    void registeredByName();
    void variantRoundTrip();
    void mapRoundTrip();
    void mapSurvivesJson();
    void valueThatDoesNotFitKeepsDefault_data();
    void valueThatDoesNotFitKeepsDefault();
};

void TestAdviceNoteResponse::accessors_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("uuid");
    QTest::addColumn<QString>("key4");
    QTest::newRow("both present") << QByteArray(R"({"uuid":"u","Key4":"A"})") << "u" << "A";
    QTest::newRow("lower-case key4") << QByteArray(R"({"key4":"b"})") << QString() << "b";
    QTest::newRow("neither") << QByteArray(R"({"status":"ok"})") << QString() << QString();
    QTest::newRow("mistyped") << QByteArray(R"({"uuid":1,"Key4":2})") << QString() << QString();
    QTest::newRow("mistyped Key4 falls back") << QByteArray(R"({"Key4":null,"key4":"b"})") << QString() << "b";
    QTest::newRow("array body") << QByteArray(R"([{"uuid":"u"}])") << QString() << QString();
}

void TestAdviceNoteResponse::accessors()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, uuid);
    QFETCH(QString, key4);
    const AdviceNoteResponse response = answer(body);
    QCOMPARE(response.uuid(), uuid);
    QCOMPARE(response.key4(), key4);
}

void TestAdviceNoteResponse::capitalisedKey4Wins()
{
    QCOMPARE(answer(R"({"Key4":"A","key4":"b"})").key4(), QStringLiteral("A"));
    QCOMPARE(answer(R"({"key4":"b"})").key4(), QStringLiteral("b"));
    QCOMPARE(answer(R"({"uuid":"x"})").key4(), QString());
}

void TestAdviceNoteResponse::equalityIgnoresTheDigest()
{
    const AdviceNoteResponse first = answer(body, digest);
    const AdviceNoteResponse second = answer(body, QStringLiteral("92eb5ffee6ae2fec3ad71c777531578f"));
    QVERIFY(first == second);
    QVERIFY(QVariant::fromValue(first) == QVariant::fromValue(second));
    QVERIFY(QMetaType::fromType<AdviceNoteResponse>().equals(&first, &second));
}

void TestAdviceNoteResponse::equalityComparesTheReply()
{
    const AdviceNoteResponse first = answer(body, digest);
    const AdviceNoteResponse other = answer(R"({"uuid":"r-2","Key4":"000012000345"})", digest);
    QVERIFY(first != other);
    QVERIFY(QVariant::fromValue(first) != QVariant::fromValue(other));
}

void TestAdviceNoteResponse::defaultHasNoDigest()
{
    const AdviceNoteResponse empty;
    QVERIFY(empty.requestHashSum.isEmpty());
    QVERIFY(empty.requestHashSum != digest);
    QVERIFY(empty.jsonObject().isEmpty());
    QVERIFY(AdviceNoteResponse(Response(QJsonObject{{QStringLiteral("uuid"), QStringLiteral("u")}})).requestHashSum.isEmpty());
}

void TestAdviceNoteResponse::copiesTheWholeBase()
{
    const AdviceNoteResponse response = answer(body, digest);
    QCOMPARE(response.rawBody(), body);
    QCOMPARE(response.requestUrl(), QUrl(QStringLiteral("http://tessaro.test/advicenote")));
    QCOMPARE(response.transport(), 200);
    const AdviceNoteResponse copy = response;
    QCOMPARE(copy.requestHashSum, digest);
    QCOMPARE(copy.rawBody(), body);
    QCOMPARE(copy.status(), Response::Success);
}

void TestAdviceNoteResponse::propertiesByName()
{
    const QMetaObject &meta = AdviceNoteResponse::staticMetaObject;
    QCOMPARE(meta.propertyCount(), 2);
    QCOMPARE(meta.property(0).name(), "requestHashSum");
    QCOMPARE(meta.property(1).name(), "response");
    QCOMPARE(meta.property(1).metaType(), QMetaType::fromType<QJsonObject>());

    AdviceNoteResponse response = answer(body, digest);
    QCOMPARE(meta.property(1).readOnGadget(&response).toJsonObject(), response.jsonObject());
    const QJsonObject replaced{{QStringLiteral("Key4"), QStringLiteral("9")}};
    QVERIFY(meta.property(1).writeOnGadget(&response, QVariant(replaced)));
    QCOMPARE(response.jsonObject(), replaced);
    QCOMPARE(response.key4(), QStringLiteral("9"));
}

void TestAdviceNoteResponse::registeredByName()
{
    const QMetaType type = QMetaType::fromName("tessaro::AdviceNoteResponse");
    QVERIFY(type.isValid());
    QCOMPARE(type, QMetaType::fromType<AdviceNoteResponse>());
}

void TestAdviceNoteResponse::variantRoundTrip()
{
    const QVariant variant = QVariant::fromValue(answer(body, digest));
    const AdviceNoteResponse back = variant.value<AdviceNoteResponse>();
    QCOMPARE(back.requestHashSum, digest);
    QVERIFY(back == answer(body));
    QCOMPARE(back.rawBody(), body);
}

void TestAdviceNoteResponse::mapRoundTrip()
{
    const QVariantMap map = answer(body, digest).toMap();
    QCOMPARE(map.keys(), (QStringList{QStringLiteral("requestHashSum"), QStringLiteral("response")}));
    QCOMPARE(map.value(QStringLiteral("requestHashSum")).toString(), digest);

    const AdviceNoteResponse back = AdviceNoteResponse::fromMap(map);
    QCOMPARE(back.requestHashSum, digest);
    QCOMPARE(back.jsonObject(), QJsonDocument::fromJson(body).object());
    QCOMPARE(back.key4(), QStringLiteral("000012000345"));
    QCOMPARE(QVariant(map).value<AdviceNoteResponse>().requestHashSum, digest);
    QCOMPARE(QVariant::fromValue(answer(body, digest)).toMap(), map);
}

void TestAdviceNoteResponse::mapSurvivesJson()
{
    // Documents are saved as JSON: the body comes back as a map, not as a JSON object.
    const QJsonObject json = QJsonObject::fromVariantMap(answer(body, digest).toMap());
    const QVariantMap back = QJsonDocument::fromJson(QJsonDocument(json).toJson()).object().toVariantMap();
    const AdviceNoteResponse restored = AdviceNoteResponse::fromMap(back);
    QCOMPARE(restored.requestHashSum, digest);
    QCOMPARE(restored.uuid(), QStringLiteral("r-1"));
    QCOMPARE(restored.key4(), QStringLiteral("000012000345"));
}

void TestAdviceNoteResponse::valueThatDoesNotFitKeepsDefault_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("NaN digest") << "requestHashSum" << QVariant(qQNaN());
    QTest::newRow("infinite digest") << "requestHashSum" << QVariant(-qInf());
    QTest::newRow("list as digest") << "requestHashSum" << QVariant(QVariantList{digest});
    QTest::newRow("text as the body") << "response" << QVariant(QString::fromUtf8(body));
    QTest::newRow("list as the body") << "response" << QVariant(QVariantList{1, 2});
}

void TestAdviceNoteResponse::valueThatDoesNotFitKeepsDefault()
{
    QFETCH(QString, property);
    QFETCH(QVariant, value);
    const AdviceNoteResponse read = AdviceNoteResponse::fromMap({{property, value}});
    QVERIFY2(read.requestHashSum.isEmpty(), qPrintable(read.requestHashSum));
    QVERIFY(read.jsonObject().isEmpty());
}

QTEST_GUILESS_MAIN(TestAdviceNoteResponse)
#include "tst_advicenoteresponse.moc"
