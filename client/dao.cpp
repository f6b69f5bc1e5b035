#include "dao.h"

#include "hostsdk/hostadapter.h"

#include <documentsdao.h>
#include <singleton.h>
#include <valutcollection.h>

namespace tessaro {

Dao::~Dao() = default;

QList<Dao::ShiftPayment> Dao::getShiftPayments(int shift) const
{
    QList<ShiftPayment> payments;
    const QList<int> codes = hostsdk::paymentTypeCodes();
    for (int code : codes)
        payments.append({code, hostsdk::paymentTotal(code, shift).toDouble()});
    return payments;
}

} // namespace tessaro
