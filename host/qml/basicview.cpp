#include "basicview.h"

namespace qml {

BasicView::BasicView(EActivityListener::Event code)
    : m_code(code)
{
}

BasicView::~BasicView() = default;

ViewDescriptor BasicView::get(const Event &)
{
    return {};
}

} // namespace qml
