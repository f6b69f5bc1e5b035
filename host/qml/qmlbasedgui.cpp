#include "qmlbasedgui.h"

namespace qml {

void QmlBasedGui::addView(const QSharedPointer<BasicView> &view)
{
    m_views << view;
}

ViewDescriptor QmlBasedGui::findView(const Event &event) const
{
    for (const auto &view : m_views) {
        ViewDescriptor descriptor = view->get(event);
        if (!descriptor.isEmpty())
            return descriptor;
    }
    return {};
}

Event QmlBasedGui::present(const Event &event) const
{
    const ViewDescriptor descriptor = findView(event);
    if (descriptor.isEmpty() || !m_presenter)
        return {};
    return m_presenter(descriptor);
}

} // namespace qml
