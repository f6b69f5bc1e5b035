#include "testhost.h"

#include "../config.h"
#include "../hostobjects.h"
#include "../mockfactory.h"
#include "../session.h"
#include "../singleton.h"

#include <QFile>

TestHost::TestHost(const QString &iniText)
    : m_dialog(QSharedPointer<ScriptedDialog>::create())
    , m_clock(QSharedPointer<SettableClock>::create())
{
    reset();
    setConfig(iniText);
    auto *session = Singleton<Session>::instance();
    session->getRegistry().setShopCode(QStringLiteral("7"));
    session->getRegistry().setCashCode(QStringLiteral("12"));
    session->setCurrentUser(QSharedPointer<User>::create(5, QStringLiteral("1005"), QStringLiteral("Иванова А. А.")));
    MockFactory<Dialog>::setInstance(m_dialog);
    MockFactory<CurrentTime>::setInstance(m_clock);
}

TestHost::~TestHost()
{
    reset();
}

void TestHost::setConfig(const QString &iniText)
{
    // QSettings caches files by name and modification time: a new name for
    // every configuration makes sure the new text is the one read.
    ++m_configGeneration;
    QFile file(configFile());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(iniText.toUtf8());
    file.close();
    Singleton<Config>::setInstance(new Config(configFile()));
}

QString TestHost::configFile() const
{
    return m_dir.filePath(QStringLiteral("host-%1.ini").arg(m_configGeneration));
}

void TestHost::reset()
{
    HostObjects::resetAll();
}
