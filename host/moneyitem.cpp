#include "moneyitem.h"

MoneyItem::MoneyItem(QObject *parent)
    : QObject(parent)
{
}
