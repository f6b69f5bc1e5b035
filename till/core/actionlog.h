#pragma once

#include "report.h"

#include <actionpipeline.h>

namespace till {

/// Collects what happens during one action: the pipeline's steps, the dialogs
/// shown, the requests sent, the till's remarks. The pipeline's observer,
/// the till's dialog and the recording REST client all write here.
class ActionLog
{
public:
    /// Starts the record of a new action.
    void begin(int index, const QString &type, const QString &title);
    /// Ends the current record and hands it over.
    ActionRecord finish();

    void addStep(const ActionPipeline::Step &step);
    void addDialog(const DialogRecord &dialog);
    void addRequest(const RequestRecord &request);
    void addNote(const QString &note);
    void addFailure(const QString &failure);
    void setResult(int result);

    const ActionRecord &current() const { return m_current; }

private:
    ActionRecord m_current;
};

} // namespace till
