#include "plugintestcase.h"

#include <contextmanager.h>
#include <singleton.h>

void PluginTestCase::init()
{
    m_host = std::make_unique<PluginTestHost>(configuration());
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);
    m_plugin = std::make_unique<TestablePlugin>();
    m_plugin->init();
}

void PluginTestCase::cleanup()
{
    m_plugin.reset();
    m_host.reset();
}
