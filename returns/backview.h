#pragma once

#include <qml/basicview.h>

#include <QUrl>

namespace tessaro {

/// The view of the till's QML interface for the plug-in's multi-field input
/// event (activity event 78).
///
/// The descriptor names the form the event asks for (its "form" value) and
/// sets the form's context property "params" to the event's "params". The
/// forms are QML documents of the module "Tessaro.Returns", built into the
/// plug-in's resources: a host shows the form named F from
/// qrc:/qt/qml/Tessaro/Returns/F.qml (formUrl()).
///
/// A form answers through signals of its root object: answered(data), with a
/// map from field name to value (dates as ISO text, "yyyy-MM-dd"), or
/// cancelled(). The host's presenter turns answered(data) into the answer
/// event {"data": data} and cancelled() into an answer without "data".
class BackView : public qml::BasicView
{
public:
    BackView();

    /// The descriptor for \a event; empty for any event but 78.
    qml::ViewDescriptor get(const Event &event) override;

    /// Where the form named \a form is found in the plug-in's resources.
    static QUrl formUrl(const QString &form);
};

} // namespace tessaro
