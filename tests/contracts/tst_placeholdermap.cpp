#include <contracts/placeholdermap.h>

#include <QTest>
#include <QUrl>

using namespace tessaro::contracts;

/// Each secret becomes one placeholder wherever and however it is written.
class TestPlaceholderMap : public QObject
{
    Q_OBJECT

private slots:
    void sameSecretSamePlaceholder();
    void everyFormReplaced_data();
    void everyFormReplaced();
    void shortSecretsKept();
    void substitute();
};

void TestPlaceholderMap::sameSecretSamePlaceholder()
{
    PlaceholderMap map;
    const QString first = map.add(QStringLiteral("token-one"));
    const QString second = map.add(QStringLiteral("token-two"));
    QCOMPARE(first, QStringLiteral("secret-placeholder-1"));
    QCOMPARE(second, QStringLiteral("secret-placeholder-2"));
    QCOMPARE(map.add(QStringLiteral("token-one")), first);
    QCOMPARE(map.add(first), QString());
    QCOMPARE(map.size(), 2);
    QCOMPARE(map.apply(QStringLiteral("Bearer token-one, then Bearer token-two, then token-one")),
             QStringLiteral("Bearer secret-placeholder-1, then Bearer secret-placeholder-2, then secret-placeholder-1"));
}

void TestPlaceholderMap::everyFormReplaced_data()
{
    const QString secret = QStringLiteral("s3cr/t+v@lue?");
    const QByteArray raw = secret.toUtf8();
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("raw") << QByteArray("{\"access_token\":\"" + raw + "\"}");
    QTest::newRow("base64") << QByteArray("Basic " + raw.toBase64());
    QTest::newRow("base64url") << QByteArray("x=" + raw.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
    QTest::newRow("percent-encoded") << QByteArray("client_secret=" + QUrl::toPercentEncoding(secret));
}

void TestPlaceholderMap::everyFormReplaced()
{
    QFETCH(QByteArray, text);
    PlaceholderMap map;
    map.add(QStringLiteral("s3cr/t+v@lue?"));
    const QByteArray masked = map.apply(text);
    QVERIFY2(masked.contains("secret-placeholder-1"), masked.constData());
    QVERIFY2(!masked.contains("s3cr"), masked.constData());
}

void TestPlaceholderMap::shortSecretsKept()
{
    PlaceholderMap map;
    QCOMPARE(map.add(QStringLiteral("abc")), QString());
    QCOMPARE(map.apply(QByteArray("abc abc")), QByteArray("abc abc"));
}

void TestPlaceholderMap::substitute()
{
    const QHash<QString, QString> values{{QStringLiteral("secret-placeholder-1"), QStringLiteral("one")},
                                         {QStringLiteral("secret-placeholder-12"), QStringLiteral("twelve")}};
    QCOMPARE(PlaceholderMap::substitute("Bearer secret-placeholder-12 secret-placeholder-1", values), QByteArray("Bearer twelve one"));
    QCOMPARE(PlaceholderMap::substitute("no placeholder", values), QByteArray("no placeholder"));
}

QTEST_GUILESS_MAIN(TestPlaceholderMap)
#include "tst_placeholdermap.moc"
