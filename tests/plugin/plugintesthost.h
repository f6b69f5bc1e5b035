#pragma once

#include "scriptedbackdialog.h"

#include <backbysaledocument.h>
#include <testing/testhost.h>

#include <QSharedPointer>

/// A fresh host for one plug-in test: TestHost with a scripted invoice
/// dialog in place of tessaro::BackDialog, and the documents tests bind,
/// kept alive as long as the host.
class PluginTestHost : public TestHost
{
public:
    explicit PluginTestHost(const QString &iniText = QString());
    ~PluginTestHost();

    QSharedPointer<ScriptedBackDialog> backDialog() const { return m_backDialog; }

    /// A document of \a type; with \a card it carries the plug-in's customer card.
    QSharedPointer<AbstractDocument> document(int type, bool card = true);
    /// A return document that already names its sale: till 12, invoice 345.
    QSharedPointer<AbstractDocument> returnWithInvoice(bool card = true);
    /// A return by sale of the sale identified by \a saleIdentifier, made in store 7.
    QSharedPointer<BackBySaleDocument> backBySale(const QString &saleIdentifier);

private:
    static void giveCard(AbstractDocument &document);

    QSharedPointer<ScriptedBackDialog> m_backDialog;
    // The host keeps the documents it hands out; the plug-in only watches them.
    QList<QSharedPointer<AbstractDocument>> m_documents;
};
