#include "hooktable.h"

#include <QTest>

void addHookTable()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("context");
    QTest::addColumn<int>("actionType");
    QTest::addColumn<int>("order");
    QTest::addColumn<int>("priority");
    QTest::addColumn<QString>("member");
    QTest::addColumn<bool>("returnsOnly");
    QTest::newRow("1 input") << 1 << 6 << 192 << 1 << 1 << "beforeInput" << false;
    QTest::newRow("2 coupon") << 2 << 6 << 198 << 1 << 3 << "addCoupon" << false;
    QTest::newRow("3 position add") << 3 << 6 << 201 << 1 << 1 << "beforePositionAdd" << false;
    QTest::newRow("4 document close") << 4 << 255 << 211 << 1 << 3 << "beforeAttemptToDocumentClose" << false;
    QTest::newRow("5 return-by-sale attempt") << 5 << 6 << 227 << 1 << 3 << "beforeAttemptToBackBySale" << false;
    QTest::newRow("6 payment") << 6 << 7 << 4 << 1 << 1 << "checkPaymentRestrictions" << false;
    QTest::newRow("7 before storno all") << 7 << 6 << 131 << 1 << 3 << "beforeStornoAll" << true;
    QTest::newRow("8 after storno all") << 8 << 6 << 131 << 0 << 2 << "afterStornoAll" << true;
    QTest::newRow("9 return by sale") << 9 << 255 << 8 << 1 << 3 << "beforeBackBySale" << true;
}
