#include "basicloyaltysystem.h"

#include "abstractdocument.h"

BasicLoyaltySystem::BasicLoyaltySystem() = default;

BasicLoyaltySystem::~BasicLoyaltySystem() = default;

void BasicLoyaltySystem::init()
{
    m_initialized = true;
    registerLoyaltySystem();
}

bool BasicLoyaltySystem::identifyByCard(QSharedPointer<DocumentCardRecord> &, ECardNumberType)
{
    return false;
}

bool BasicLoyaltySystem::commit(const QSharedPointer<AbstractDocument> &)
{
    return true;
}

bool BasicLoyaltySystem::cancel()
{
    return true;
}

bool BasicLoyaltySystem::rollback(const QSharedPointer<AbstractDocument> &)
{
    return true;
}

bool BasicLoyaltySystem::restoreLoyaltySystem()
{
    return true;
}

bool BasicLoyaltySystem::registerLoyaltySystem()
{
    m_registered = true;
    return true;
}

bool BasicLoyaltySystem::deregisterLoyaltySystem()
{
    m_registered = false;
    return true;
}

void BasicLoyaltySystem::setOption(LoyaltySystemOption option, bool on)
{
    if (on)
        m_options.insert(option);
    else
        m_options.remove(option);
}

QVariant BasicLoyaltySystem::getPluginData(const QString &key, const QVariant &defaultValue) const
{
    const auto document = getDocument();
    return document ? document->getPluginData(m_systemType, key, defaultValue) : defaultValue;
}

void BasicLoyaltySystem::setPluginData(const QString &key, const QVariant &value)
{
    if (const auto document = getDocument())
        document->setPluginData(m_systemType, key, value);
}

bool BasicLoyaltySystem::hasCard() const
{
    const auto document = getDocument();
    return document && document->getCardRecord(m_systemType);
}
