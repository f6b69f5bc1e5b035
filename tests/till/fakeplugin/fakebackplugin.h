#pragma once

#include <basicloyaltysystem.h>
#include <control/action.h>
#include <econtext.h>

#include <QObject>
#include <QtPlugin>

/// A stand-in of the plug-in for the till's tests, loaded by the till as
/// libtessaroback.so from a folder of its own. It registers a few hooks of
/// each kind (before, after, a handler, context 255), shows a message, a
/// choice and the form "InputInvoiceInfo", queues an action, asks the host
/// for a quantity, sends one request per close and keeps its values on the
/// document, so every path of the till's host can be watched.
///
/// TESSARO_FAKE_KILL_MARKER names a file: when it does not exist yet, the
/// first close creates it and kills the process right after the plug-in
/// stored its answer, before the host closes the document.
class FakeBackPlugin : public QObject, public BasicLoyaltySystem
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "TessaroBack")
    Q_INTERFACES(BasicLoyaltySystem BasicPlugin)

public:
    FakeBackPlugin();

    void init() override;
    void setDocument(const QSharedPointer<AbstractDocument> &document) override;
    bool restoreLoyaltySystem() override;

private:
    EContext::Result beforePositionAdd(const control::Action &action);
    EContext::Result selectBackReason(const control::Action &action);
    EContext::Result beforeClose(const control::Action &action);
    EContext::Result afterStornoAll(const control::Action &action);
    EContext::Result checkPayment(const control::Action &action);

    int m_initCount = 0;
    int m_restoreCount = 0;
};
