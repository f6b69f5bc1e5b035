#pragma once

#include "basicplugin.h"
#include "documentwatcher.h"

#include <QSet>
#include <QSharedPointer>
#include <QVariant>

class AbstractDocument;
class DocumentCardRecord;

/// Options a loyalty system declares to the host.
enum class LoyaltySystemOption {
    ProcessesReturns = 256,
};

/// How a card number was obtained.
enum class ECardNumberType {
    Scanned = 0,
    Typed = 1,
};

/// The host's base of loyalty systems: a plug-in bound to the document in
/// progress that keeps its own values on that document.
class BasicLoyaltySystem : public DocumentWatcher, public virtual BasicPlugin
{
public:
    BasicLoyaltySystem();
    ~BasicLoyaltySystem() override;

    /// The host's own initialisation of the loyalty system.
    void init() override;
    bool isInitialized() const { return m_initialized; }

    virtual bool identifyByCard(QSharedPointer<DocumentCardRecord> &card, ECardNumberType type);
    virtual bool commit(const QSharedPointer<AbstractDocument> &document);
    virtual bool cancel();
    virtual bool rollback(const QSharedPointer<AbstractDocument> &document);
    virtual bool restoreLoyaltySystem();
    virtual bool registerLoyaltySystem();
    virtual bool deregisterLoyaltySystem();
    bool isRegistered() const { return m_registered; }

    int getSystemType() const { return m_systemType; }

    void setOption(LoyaltySystemOption option, bool on);
    bool hasOption(LoyaltySystemOption option) const { return m_options.contains(option); }

    /// The value this loyalty system stored on the bound document under \a key.
    QVariant getPluginData(const QString &key, const QVariant &defaultValue = QVariant()) const;
    void setPluginData(const QString &key, const QVariant &value);

    /// Whether the bound document carries this system's customer card.
    bool hasCard() const;

protected:
    int m_systemType = 0;

private:
    QSet<LoyaltySystemOption> m_options;
    bool m_registered = false;
    bool m_initialized = false;
};

#define BasicLoyaltySystem_iid "norvik.BasicLoyaltySystem"
Q_DECLARE_INTERFACE(BasicLoyaltySystem, BasicLoyaltySystem_iid)
