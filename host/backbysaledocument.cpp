#include "backbysaledocument.h"

#include "edocumenttype.h"

#include <QMetaType>

namespace {

// Actions carry documents as pointers to their own class; whoever reads one
// as an AbstractDocument converts it through the meta-type system.
void registerDocumentConversion()
{
    QMetaType::registerConverter<QSharedPointer<BackBySaleDocument>, QSharedPointer<AbstractDocument>>();
}
Q_CONSTRUCTOR_FUNCTION(registerDocumentConversion)

} // namespace

BackBySaleDocument::BackBySaleDocument(QObject *parent)
    : BackDocument(EDocumentType::BackBySale, parent)
{
}
