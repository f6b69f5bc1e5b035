#pragma once

#include "basicview.h"

#include <QList>
#include <QSharedPointer>

#include <functional>

namespace qml {

/// The host's QML interface: the views plug-ins add, and the presenter that
/// shows a form and waits for the cashier's answer.
///
/// The host application installs the presenter (a window, a terminal, a test
/// script); without one every form is answered as cancelled.
class QmlBasedGui
{
public:
    using Presenter = std::function<Event(const ViewDescriptor &)>;

    void addView(const QSharedPointer<BasicView> &view);
    QList<QSharedPointer<BasicView>> views() const { return m_views; }

    /// The first view's descriptor for \a event, or an empty one.
    ViewDescriptor findView(const Event &event) const;

    void setPresenter(const Presenter &presenter) { m_presenter = presenter; }
    /// Shows the form for \a event and returns the answer event (empty when
    /// no view shows it or the cashier cancels).
    Event present(const Event &event) const;

private:
    QList<QSharedPointer<BasicView>> m_views;
    Presenter m_presenter;
};

} // namespace qml
