#pragma once

#include "../einput.h"
#include "../event.h"

#include <QObject>

namespace core {

/// A host dialog that sends an event to the QML interface and waits for the
/// cashier's answer.
class BasicDialog : public QObject
{
    Q_OBJECT

public:
    explicit BasicDialog(QObject *parent = nullptr);
    ~BasicDialog() override;

    virtual bool isActive() const;
    virtual bool closedByTimeout() const;
    virtual void close();
    virtual void closeByTimeout();
    /// Shows \a event and returns the answer event; an empty event when the
    /// cashier cancelled or nothing could show it.
    virtual Event show(bool modal, bool closeByTimeout, QFlags<EInput::Source> sources, const Event &event);

private:
    bool m_active = false;
    bool m_closedByTimeout = false;
};

} // namespace core
