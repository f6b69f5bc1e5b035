#pragma once

#include <QJsonObject>
#include <QTest>
#include <QVariant>

#include <functional>

/// Data rows for the accessors of a service reply: for each accessor, its
/// result for a body that holds the key with a usable value, for one without
/// the key and for one whose value has the wrong JSON type.
template <typename Reply>
class CartAccessorRows
{
public:
    using Reader = std::function<QVariant(const Reply &)>;

    static void addColumns()
    {
        QTest::addColumn<Reader>("read");
        QTest::addColumn<QJsonObject>("body");
        QTest::addColumn<QVariant>("expected");
    }

    /// The three rows of one accessor; \a fallback is its result both without
    /// the key and with \a mistyped under it.
    template <typename Result>
    static void add(const char *name, Result (Reply::*accessor)() const, const QString &key, const QJsonValue &value,
                    const QVariant &expected, const QJsonValue &mistyped, const QVariant &fallback)
    {
        addRow(name, "present", accessor, QJsonObject{{key, value}}, expected);
        addRow(name, "missing", accessor, QJsonObject{{QStringLiteral("unrelated"), 1}}, fallback);
        addRow(name, "mistyped", accessor, QJsonObject{{key, mistyped}}, fallback);
    }

    template <typename Result>
    static void addRow(const char *name, const char *kind, Result (Reply::*accessor)() const, const QJsonObject &body,
                       const QVariant &expected)
    {
        const Reader read = [accessor](const Reply &reply) { return QVariant::fromValue((reply.*accessor)()); };
        QTest::addRow("%s %s", name, kind) << read << body << expected;
    }

    /// The test function of the table.
    static void check()
    {
        QFETCH(Reader, read);
        QFETCH(QJsonObject, body);
        QFETCH(QVariant, expected);
        QCOMPARE(read(Reply(body)), expected);
    }
};
