#include "shiftclosedexception.h"

namespace tessaro {

ShiftClosedException::ShiftClosedException()
    : BasicException(tr::Tr(QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена в Tessaro закрыта")))
{
}

} // namespace tessaro
