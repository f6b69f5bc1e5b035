#pragma once

#include "simpleprogress.h"
#include "tr.h"

#include <QSharedPointer>
#include <QStringList>

/// The host's modal messages to the cashier. Made through MockFactory<Dialog>:
/// the host application installs one that shows them; the default only logs
/// and answers every choice as cancelled.
class Dialog
{
public:
    /// How a message is shown.
    enum Kind {
        Information = 0,
        Error = 1,
    };

    virtual ~Dialog();

    /// Shows \a message until the cashier confirms it; \a timeout in seconds, 0 for none.
    virtual void showMessage(const tr::Tr &message, int kind, int timeout);
    /// Lets the cashier pick one of \a items; returns its index, or -1 when cancelled.
    virtual int showChoice(const tr::Tr &title, const QStringList &items);
    /// Shows \a message until the returned object is destroyed.
    virtual QSharedPointer<SimpleProgress> showProgress(const tr::Tr &message);
};
