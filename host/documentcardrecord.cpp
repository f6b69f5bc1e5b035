#include "documentcardrecord.h"

DocumentCardRecord::DocumentCardRecord(int cardType, const QVariant &number)
    : m_cardType(cardType)
    , m_number(number)
{
}
