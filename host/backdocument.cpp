#include "backdocument.h"

#include "edocumenttype.h"

#include <QMetaType>

namespace {

// Actions carry documents as pointers to their own class; whoever reads one
// as an AbstractDocument converts it through the meta-type system.
void registerDocumentConversion()
{
    QMetaType::registerConverter<QSharedPointer<BackDocument>, QSharedPointer<AbstractDocument>>();
}
Q_CONSTRUCTOR_FUNCTION(registerDocumentConversion)

} // namespace

BackDocument::BackDocument(QObject *parent)
    : BackDocument(EDocumentType::Back, parent)
{
}

BackDocument::BackDocument(int type, QObject *parent)
    : AbstractDocument(type, parent)
{
}
