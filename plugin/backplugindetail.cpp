#include "backplugindetail.h"

#include <actionqueuecontroller.h>
#include <dialog.h>
#include <mockfactory.h>
#include <singleton.h>

namespace tessaro::detail {

void showRefusal(const tr::Tr &message)
{
    MockFactory<Dialog>::create()->showMessage(message, Dialog::Error, 0);
}

ActionQueueController *actionQueue()
{
    return Singleton<ActionQueueController>::instance();
}

} // namespace tessaro::detail
