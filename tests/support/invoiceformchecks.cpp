#include "invoiceformchecks.h"

#include <QString>
#include <QTest>

void addInvoiceFormChecks()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("passes");
    QTest::newRow("till of 4 digits") << "cashCode" << "0012" << true;
    QTest::newRow("till of 5 digits") << "cashCode" << "12345" << false;
    QTest::newRow("till with a letter") << "cashCode" << "12a" << false;
    QTest::newRow("till empty") << "cashCode" << "" << false;
    QTest::newRow("till after a blank") << "cashCode" << " 12" << false;
    QTest::newRow("invoice of 3 digits") << "invoiceNumber" << "345" << true;
    QTest::newRow("invoice of 7 digits") << "invoiceNumber" << "1234567" << false;
    QTest::newRow("invoice before a blank") << "invoiceNumber" << "345 " << false;
    // The plug-in gives the store no check: whatever is typed passes.
    QTest::newRow("store without check") << "storeNumber" << "ТЦ-7" << true;
    QTest::newRow("store that looks like a date") << "storeNumber" << "01.02.2024" << true;
    QTest::newRow("date as shown") << "invoiceDate" << "01.02.2024" << true;
    QTest::newRow("date that does not exist") << "invoiceDate" << "31.02.2024" << false;
    QTest::newRow("date in ISO form") << "invoiceDate" << "2024-02-01" << false;
    QTest::newRow("date empty") << "invoiceDate" << "" << false;
    QTest::newRow("date after a blank") << "invoiceDate" << " 01.02.2024" << false;
}
