#pragma once

#include "storageitem.h"

#include <QList>
#include <QString>
#include <QVariant>

class QSqlError;

/// The host's documents store, an SQLite database: shift storage records and
/// the payments of closed documents.
///
/// The database file is the configuration's "Host:database" value; without one
/// the store lives in memory for the life of the process.
class DocumentsDao
{
public:
    DocumentsDao();
    explicit DocumentsDao(const QString &databaseFile);
    ~DocumentsDao();
    DocumentsDao(const DocumentsDao &) = delete;
    DocumentsDao &operator=(const DocumentsDao &) = delete;

    /// Saves \a item, replacing an item of the same name and shift.
    bool saveStorageItem(const StorageItem &item);
    QList<StorageItem> getStorageItems(int shift) const;

    /// Records a payment of a closed document in \a shift.
    bool addPayment(int shift, int valCode, double amount);
    /// The total of one currency's payments in one shift, as a double (0.0 when none).
    QVariant getPaymentTotal(int valCode, int shift) const;

    /// Groups the writes that follow until commit() or rollback(), so that
    /// they land all together or not at all.
    bool transaction();
    bool commit();
    bool rollback();

    QString databaseFile() const { return m_file; }
    /// Why the last write that failed did ("database or disk is full").
    QString lastError() const { return m_lastError; }
    /// How many writes have failed since the store was opened.
    int failures() const { return m_failures; }

private:
    bool exec(const QString &statement, const QVariantList &values) const;
    /// Whether there was no \a error; keeps its text for lastError() and warns of it.
    bool result(const QSqlError &error) const;

    QString m_file;
    QString m_connection;
    mutable QString m_lastError;
    mutable int m_failures = 0;
};
