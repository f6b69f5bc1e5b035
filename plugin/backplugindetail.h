#pragma once

// Helpers that several of BackPlugin's source files share. Private to plugin/.

#include <edocumenttype.h>

#include <QList>

class ActionQueueController;

namespace tr {
class Tr;
}

namespace tessaro::detail {

// The document types of a return.
inline const QList<int> ReturnTypes{EDocumentType::Back, EDocumentType::BackBySale};

// A refusal or an error the cashier has to confirm.
void showRefusal(const tr::Tr &message);

ActionQueueController *actionQueue();

} // namespace tessaro::detail
