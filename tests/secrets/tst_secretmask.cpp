#include <secretmask.h>

#include <QTest>

class TestSecretMask : public QObject
{
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void header_data();
    void header();
    void headerLine_data();
    void headerLine();
};

void TestSecretMask::text_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("masked");

    QTest::newRow("json string") << R"({"access_token":"abc.def","expires_in":300})"
                                 << R"({"access_token":"***","expires_in":300})";
    QTest::newRow("json spaced") << R"({ "client_secret" : "s3" , "id": 1 })"
                                 << R"({ "client_secret" : "***" , "id": 1 })";
    QTest::newRow("json escaped quote") << R"({"password":"a\"b\\","user":"u"})"
                                        << R"({"password":"***","user":"u"})";
    QTest::newRow("json number") << R"({"password":12345,"n":1})" << R"({"password":"***","n":1})";
    QTest::newRow("json nested, last key") << R"({"gate":{"appSecret":"k"}})"
                                           << R"({"gate":{"appSecret":"***"}})";
    QTest::newRow("json key case") << R"({"Password":"p"})" << R"({"Password":"***"})";
    QTest::newRow("json cut off") << R"({"password":"abcdef)" << R"({"password":"***")";
    QTest::newRow("json similar key kept") << R"({"passwordHint":"h","my_password":"x"})"
                                           << R"({"passwordHint":"h","my_password":"x"})";
    QTest::newRow("form first field") << "client_secret=s&grant_type=client_credentials"
                                      << "client_secret=***&grant_type=client_credentials";
    QTest::newRow("form later fields") << "grant_type=password&password=p%20q&access_token=t"
                                       << "grant_type=password&password=***&access_token=***";
    QTest::newRow("form similar field kept") << "mypassword=x&password_hint=y"
                                             << "mypassword=x&password_hint=y";
    QTest::newRow("url query") << "http://host/token?realm=r&client_secret=s#top"
                               << "http://host/token?realm=r&client_secret=***#top";
    QTest::newRow("url query, name in capitals") << "http://host/t?APPSECRET=k&x=1"
                                                 << "http://host/t?APPSECRET=***&x=1";
    QTest::newRow("json any name ending in token") << R"({"refresh_token":"r","id_token":"i","subjectToken":7})"
                                                   << R"({"refresh_token":"***","id_token":"***","subjectToken":"***"})";
    QTest::newRow("json any name ending in secret") << R"({"clientSecret":"c","SHARED_SECRET":"s"})"
                                                    << R"({"clientSecret":"***","SHARED_SECRET":"***"})";
    QTest::newRow("json names not ending so kept") << R"({"token_type":"Bearer","tokens":2,"secretHint":"h"})"
                                                   << R"({"token_type":"Bearer","tokens":2,"secretHint":"h"})";
    QTest::newRow("json token value kept") << R"({"grant_type":"refresh_token","n":"id_token"})"
                                           << R"({"grant_type":"refresh_token","n":"id_token"})";
    QTest::newRow("form any name ending in token") << "grant_type=refresh_token&refresh_token=r&ID_TOKEN=i"
                                                   << "grant_type=refresh_token&refresh_token=***&ID_TOKEN=***";
    QTest::newRow("form any name ending in secret") << "app_secret=a&mySecret=m&secretive=k"
                                                    << "app_secret=***&mySecret=***&secretive=k";
    QTest::newRow("url query token") << "http://host/cb?state=s&id_token=i#f"
                                     << "http://host/cb?state=s&id_token=***#f";
    QTest::newRow("nothing secret") << R"({"status":"ok"})" << R"({"status":"ok"})";
}

void TestSecretMask::text()
{
    QFETCH(QString, text);
    QFETCH(QString, masked);

    QCOMPARE(SecretMask().text(text), masked);
}

void TestSecretMask::header_data()
{
    QTest::addColumn<QStringList>("secretHeaders");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("logged");

    const QStringList unset{QStringLiteral("<unset>")};
    QTest::newRow("authorization hidden by default") << unset << "Authorization" << "Bearer t"
                                                     << "Authorization: ***";
    QTest::newRow("other header shown by default") << unset << "X-Request-ID" << "r1"
                                                   << "X-Request-ID: r1";
    QTest::newRow("named header, other case") << QStringList{"x-api-key"} << "X-Api-Key" << "k"
                                              << "X-Api-Key: ***";
    QTest::newRow("list replaces the default") << QStringList{"X-Signature"} << "Authorization"
                                               << "Basic dQ==" << "Authorization: Basic dQ==";
    QTest::newRow("secret field in a header value") << QStringList() << "X-Query" << "password=p"
                                                    << "X-Query: password=***";
}

void TestSecretMask::header()
{
    QFETCH(QStringList, secretHeaders);
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, logged);

    SecretMask mask;
    if (secretHeaders != QStringList{QStringLiteral("<unset>")})
        mask.setSecretHeaders(secretHeaders);

    QCOMPARE(mask.header(name, value), logged);
}

void TestSecretMask::headerLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("logged");

    QTest::newRow("secret") << "authorization:  Bearer t" << "authorization: ***";
    QTest::newRow("plain") << "Content-Length: 12" << "Content-Length: 12";
    QTest::newRow("status line") << "HTTP/1.1 200 OK" << "HTTP/1.1 200 OK";
}

void TestSecretMask::headerLine()
{
    QFETCH(QString, line);
    QFETCH(QString, logged);

    QCOMPARE(SecretMask().headerLine(line), logged);
}

QTEST_GUILESS_MAIN(TestSecretMask)
#include "tst_secretmask.moc"
