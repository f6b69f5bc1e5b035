#pragma once

#include <event.h>
#include <qml/viewdescriptor.h>

#include <memory>

class QQmlEngine;

namespace till {

class ActionLog;
class Cashier;

/// Shows the plug-in's QML forms on the till, as the host's QML interface
/// would: the view's set-up function runs on a fresh QML context, the form's
/// "params" are read back from that context, the cashier fills the fields,
/// and the answer goes back as an event whose "data" maps field names to
/// values (dates as dates). A cancelled form answers with an empty event.
class FormPresenter
{
public:
    FormPresenter(Cashier *cashier, ActionLog *log);
    ~FormPresenter();

    Event present(const qml::ViewDescriptor &view);

private:
    Cashier *m_cashier;
    ActionLog *m_log;
    std::unique_ptr<QQmlEngine> m_engine;
};

} // namespace till
