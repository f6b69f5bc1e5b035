#include "backbysaledocument.h"

#include "edocumenttype.h"

BackBySaleDocument::BackBySaleDocument(QObject *parent)
    : BackDocument(EDocumentType::BackBySale, parent)
{
}
