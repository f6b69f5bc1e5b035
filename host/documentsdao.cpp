#include "documentsdao.h"

#include "config.h"
#include "singleton.h"

#include <QAtomicInt>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

QString nextConnectionName()
{
    static QAtomicInt counter;
    return QStringLiteral("documentsdao-%1").arg(counter.fetchAndAddRelaxed(1));
}

} // namespace

DocumentsDao::DocumentsDao()
    : DocumentsDao(Singleton<Config>::instance()->getString(QStringLiteral("Host:database"), QStringLiteral(":memory:")))
{
}

DocumentsDao::DocumentsDao(const QString &databaseFile)
    : m_file(databaseFile)
    , m_connection(nextConnectionName())
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(m_file);
    if (!db.open())
        qWarning("documents store %s: %s", qPrintable(m_file), qPrintable(db.lastError().text()));
    exec(QStringLiteral("CREATE TABLE IF NOT EXISTS storage (shift INTEGER NOT NULL, name TEXT NOT NULL, "
                        "value TEXT NOT NULL, PRIMARY KEY (shift, name))"), {});
    exec(QStringLiteral("CREATE TABLE IF NOT EXISTS payments (shift INTEGER NOT NULL, valcode INTEGER NOT NULL, "
                        "amount REAL NOT NULL)"), {});
}

DocumentsDao::~DocumentsDao()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

bool DocumentsDao::exec(const QString &statement, const QVariantList &values) const
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(statement);
    for (const QVariant &value : values)
        query.addBindValue(value);
    return result(query.exec() ? QSqlError() : query.lastError());
}

bool DocumentsDao::transaction()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection);
    return result(db.transaction() ? QSqlError() : db.lastError());
}

bool DocumentsDao::commit()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection);
    return result(db.commit() ? QSqlError() : db.lastError());
}

bool DocumentsDao::rollback()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection);
    return result(db.rollback() ? QSqlError() : db.lastError());
}

bool DocumentsDao::result(const QSqlError &error) const
{
    if (!error.isValid())
        return true;
    m_lastError = error.text();
    ++m_failures;
    qWarning("documents store %s: %s", qPrintable(m_file), qPrintable(m_lastError));
    return false;
}

bool DocumentsDao::saveStorageItem(const StorageItem &item)
{
    return exec(QStringLiteral("INSERT OR REPLACE INTO storage (shift, name, value) VALUES (?, ?, ?)"),
                {item.getShift(), item.getName(), item.getValue()});
}

QList<StorageItem> DocumentsDao::getStorageItems(int shift) const
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(QStringLiteral("SELECT name, value FROM storage WHERE shift = ? ORDER BY name"));
    query.addBindValue(shift);
    QList<StorageItem> items;
    if (!query.exec())
        return items;
    while (query.next()) {
        StorageItem item;
        item.setShift(shift);
        item.setName(query.value(0).toString());
        item.setValue(query.value(1).toString());
        items << item;
    }
    return items;
}

bool DocumentsDao::addPayment(int shift, int valCode, double amount)
{
    return exec(QStringLiteral("INSERT INTO payments (shift, valcode, amount) VALUES (?, ?, ?)"),
                {shift, valCode, amount});
}

QVariant DocumentsDao::getPaymentTotal(int valCode, int shift) const
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(QStringLiteral("SELECT COALESCE(SUM(amount), 0.0) FROM payments WHERE valcode = ? AND shift = ?"));
    query.addBindValue(valCode);
    query.addBindValue(shift);
    if (!query.exec() || !query.next())
        return 0.0;
    return query.value(0).toDouble();
}
