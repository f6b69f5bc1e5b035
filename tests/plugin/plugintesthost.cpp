#include "plugintesthost.h"

#include <edocumenttype.h>
#include <mockfactory.h>

namespace {
// The loyalty-system type under which the plug-in finds its card.
constexpr int PluginSystemType = 27;
}

PluginTestHost::PluginTestHost(const QString &iniText)
    : TestHost(iniText)
    , m_backDialog(QSharedPointer<ScriptedBackDialog>::create())
{
    MockFactory<tessaro::BackDialog>::setInstance(m_backDialog);
}

PluginTestHost::~PluginTestHost()
{
    MockFactory<tessaro::BackDialog>::clearCreator();
}

void PluginTestHost::giveCard(AbstractDocument &document)
{
    document.addCardRecord(QSharedPointer<DocumentCardRecord>::create(PluginSystemType, QStringLiteral("2550001")));
}

QSharedPointer<AbstractDocument> PluginTestHost::document(int type, bool card)
{
    auto document = QSharedPointer<AbstractDocument>::create(type);
    if (card)
        giveCard(*document);
    m_documents << document;
    return document;
}

QSharedPointer<AbstractDocument> PluginTestHost::returnWithInvoice(bool card)
{
    auto document = this->document(EDocumentType::Back, card);
    document->setDocumentProperty(QStringLiteral("invoiceInfo"),
                                  QVariantMap{{QStringLiteral("cashCode"), QStringLiteral("12")},
                                              {QStringLiteral("invoiceNumber"), QStringLiteral("345")}});
    return document;
}

QSharedPointer<BackBySaleDocument> PluginTestHost::backBySale(const QString &saleIdentifier)
{
    auto document = QSharedPointer<BackBySaleDocument>::create();
    document->setSaleIdentifier(saleIdentifier);
    document->setShopCode(QStringLiteral("7"));
    giveCard(*document);
    m_documents << document;
    return document;
}
