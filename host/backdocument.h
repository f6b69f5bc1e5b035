#pragma once

#include "abstractdocument.h"

/// A return made without a sale document: the cashier enters the returned goods.
class BackDocument : public AbstractDocument
{
    Q_OBJECT

public:
    explicit BackDocument(QObject *parent = nullptr);

protected:
    BackDocument(int type, QObject *parent);
};
