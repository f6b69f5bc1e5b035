#include "backview.h"

#include <QQmlContext>

namespace tessaro {

BackView::BackView()
    : qml::BasicView(EActivityListener::InputMultiText)
{
}

qml::ViewDescriptor BackView::get(const Event &event)
{
    if (event.getCode() != getCode())
        return {};
    const QVariant params = event.value(QStringLiteral("params"));
    return {event, event.value(QStringLiteral("form")).toString(), [params](QQmlContext *context) {
                context->setContextProperty(QStringLiteral("params"), params);
            }};
}

QUrl BackView::formUrl(const QString &form)
{
    return QUrl(QStringLiteral("qrc:/qt/qml/Tessaro/Returns/%1.qml").arg(form));
}

} // namespace tessaro
