#pragma once

#include "storageitem.h"

#include <QList>
#include <QString>
#include <QVariant>

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

    QString databaseFile() const { return m_file; }

private:
    bool exec(const QString &statement, const QVariantList &values) const;

    QString m_file;
    QString m_connection;
};
