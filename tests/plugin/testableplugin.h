#pragma once

#include "plugin/backplugin.h"

/// The plug-in with its state open to tests.
class TestablePlugin : public tessaro::BackPlugin
{
public:
    using BackPlugin::additionalBackBySaleValuts;
    using BackPlugin::exitAfterStornoAll;
    using BackPlugin::forbiddenMixedValuts;
    using BackPlugin::interface;
    using BackPlugin::invoiceInfo;
    using BackPlugin::logger;
    using BackPlugin::triggerIds;
};
