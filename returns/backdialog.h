#pragma once

#include <core/basicdialog.h>
#include <mockfactory.h>

#include <QVariantMap>

class InputMultiTextParams;

namespace tessaro {

/// The plug-in's dialog with the cashier on the till's QML interface.
///
/// Made through MockFactory<tessaro::BackDialog>, so a test or the host can
/// put a substitute in its place. It adds no signals, slots or properties, so
/// it has no meta-object of its own.
class BackDialog : public MockFactory<BackDialog>, public core::BasicDialog
{
public:
    explicit BackDialog(QObject *parent = nullptr);

    /// Shows the multi-field input \a params as the form "InputInvoiceInfo"
    /// and waits for the cashier. Returns the answer, field name to value;
    /// empty when the cashier cancelled.
    virtual QVariantMap inputInvoiceInfo(const InputMultiTextParams &params);
};

} // namespace tessaro
