#include "checkplugin.h"

namespace tessaro {

CheckPlugin::CheckPlugin()
{
    BackPlugin::readForbiddenMixedValuts();
    BackPlugin::readAdditionalBackBySaleValuts();
}

} // namespace tessaro
