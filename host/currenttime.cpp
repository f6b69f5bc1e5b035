#include "currenttime.h"

CurrentTime::~CurrentTime() = default;

QDateTime CurrentTime::now() const
{
    return QDateTime::currentDateTime();
}
