#include "storageitem.h"

#include "session.h"
#include "singleton.h"

void StorageItem::bindToCurrentShift()
{
    m_shift = Singleton<Session>::instance()->getCurrentShift();
}
