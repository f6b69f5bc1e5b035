#include "response.h"

#include <QJsonDocument>

namespace http {

void Response::setBody(const QByteArray &body)
{
    m_body = body;
    const QJsonDocument document = QJsonDocument::fromJson(body);
    m_object = document.object();
    m_array = document.array();
}

} // namespace http
