#pragma once

// Helpers that several of BackPlugin's source files share. Private to plugin/.

#include <econtext.h>
#include <edocumenttype.h>

#include <QList>

class QString;

namespace control {
class Action;
}

namespace Log4Qt {
class Logger;
}

namespace tr {
class Tr;
}

namespace tessaro::detail {

// The document types of a return.
inline const QList<int> ReturnTypes{EDocumentType::Back, EDocumentType::BackBySale};

// A refusal or an error the cashier has to confirm.
void showRefusal(const tr::Tr &message);

// Refuses \a action, which lacks what a hook needs (\a missing, as the log
// names it: "позиции", "документа"), with an error line that says so.
EContext::Result refuseIncomplete(const Log4Qt::Logger *logger, const control::Action &action, const QString &missing);

} // namespace tessaro::detail
