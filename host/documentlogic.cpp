#include "documentlogic.h"

#include "abstractdocument.h"
#include "dialog.h"
#include "dictionariesdao.h"
#include "mockfactory.h"
#include "singleton.h"

DocumentLogic::~DocumentLogic() = default;

bool DocumentLogic::chooseCommonBackReason(const QSharedPointer<AbstractDocument> &document, const QStringList &reasonNames)
{
    if (!document)
        return false;
    if (!document->getCommonBackReason().isNull())
        return true;

    QList<DictionariesDao::BackReason> reasons;
    const auto all = Singleton<DictionariesDao>::instance()->getBackReasons(document->getBackReasonDictionaryKind());
    for (const auto &reason : all) {
        if (reasonNames.isEmpty() || reasonNames.contains(reason.name))
            reasons << reason;
    }
    if (reasons.isEmpty())
        return false;

    int chosen = 0;
    if (reasons.size() > 1) {
        QStringList names;
        for (const auto &reason : std::as_const(reasons))
            names << reason.name;
        chosen = MockFactory<Dialog>::create()->showChoice(
            tr::Tr(QStringLiteral("commonBackReason"), QStringLiteral("Выберите причину возврата")), names);
        if (chosen < 0 || chosen >= reasons.size())
            return false;
    }
    document->setCommonBackReason(reasons.at(chosen).code);
    return true;
}
