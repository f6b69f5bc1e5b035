#include "connectionerrorexception.h"

namespace tessaro {

ConnectionErrorException::ConnectionErrorException()
    : BasicException(tr::Tr(QStringLiteral("tessaroConnectionError"),
                            QStringLiteral("Ошибка связи с сервером Tessaro\nНе выключайте кассу! Дождитесь завершения операции")))
{
}

} // namespace tessaro
