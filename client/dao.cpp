#include "dao.h"

#include <documentsdao.h>
#include <singleton.h>
#include <valutcollection.h>

namespace tessaro {

Dao::~Dao() = default;

QList<Dao::ShiftPayment> Dao::getShiftPayments(int shift) const
{
    const DocumentsDao *documents = Singleton<DocumentsDao>::instance();
    QList<ShiftPayment> payments;
    const QList<int> codes = Singleton<ValutCollection>::instance()->getValutCodes();
    for (int code : codes)
        payments.append({code, documents->getPaymentTotal(code, shift).toDouble()});
    return payments;
}

} // namespace tessaro
