#pragma once

#include <savetofilelogic.h>

#include <functional>

namespace till {

/// The till's SaveToFileLogic, installed through MockFactory<SaveToFileLogic>:
/// the host's save, and a save that fails is the till's store failure,
/// whoever asked for it (the till itself or the plug-in).
class TillSaveToFileLogic : public SaveToFileLogic
{
public:
    /// \a failed is told what could not be written.
    explicit TillSaveToFileLogic(const std::function<void(const QString &what)> &failed);

    bool save(const QSharedPointer<AbstractDocument> &document, const QStringList &parts) override;

private:
    std::function<void(const QString &)> m_failed;
};

} // namespace till
