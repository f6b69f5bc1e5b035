#include "basicdialog.h"

#include "../qml/qmlbasedgui.h"
#include "../singleton.h"

namespace core {

BasicDialog::BasicDialog(QObject *parent)
    : QObject(parent)
{
}

BasicDialog::~BasicDialog() = default;

bool BasicDialog::isActive() const
{
    return m_active;
}

bool BasicDialog::closedByTimeout() const
{
    return m_closedByTimeout;
}

void BasicDialog::close()
{
    m_active = false;
}

void BasicDialog::closeByTimeout()
{
    m_closedByTimeout = true;
    close();
}

Event BasicDialog::show(bool, bool, QFlags<EInput::Source>, const Event &event)
{
    m_active = true;
    m_closedByTimeout = false;
    Event answer = Singleton<qml::QmlBasedGui>::instance()->present(event);
    m_active = false;
    return answer;
}

} // namespace core
