#include "cashdrawer.h"

#include "session.h"
#include "singleton.h"

CashDrawer::~CashDrawer() = default;

double CashDrawer::getAmount() const
{
    return Singleton<Session>::instance()->getDrawerAmount();
}
