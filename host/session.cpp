#include "session.h"

#include "abstractdocument.h"

Session::Session()
    : m_user(QSharedPointer<User>::create())
{
}
