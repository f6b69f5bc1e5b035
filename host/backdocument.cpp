#include "backdocument.h"

#include "edocumenttype.h"

BackDocument::BackDocument(QObject *parent)
    : BackDocument(EDocumentType::Back, parent)
{
}

BackDocument::BackDocument(int type, QObject *parent)
    : AbstractDocument(type, parent)
{
}
