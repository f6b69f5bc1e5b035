// ScenarioParser: the JSON text and a scenario's top level; the reader of
// each part has a source file of its own.

#include "scenarioparser.h"

#include "scenarioparserdetail.h"
#include "tillsettingsreader.h"

#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>

namespace till {

using detail::actionAt;
using detail::allowOnly;
using detail::answerAt;
using detail::arrayAt;
using detail::child;
using detail::documentAt;
using detail::element;
using detail::expectationAt;
using detail::fail;
using detail::objectAt;
using detail::quoted;
using detail::required;
using detail::stringAt;

namespace {

Scenario scenarioAt(const QJsonObject &root)
{
    allowOnly(root, QString(),
              {QStringLiteral("name"), QStringLiteral("description"), QStringLiteral("till"),
               QStringLiteral("documents"), QStringLiteral("answers"), QStringLiteral("actions"),
               QStringLiteral("expect")});
    Scenario scenario;
    scenario.name = stringAt(required(root, QString(), QStringLiteral("name")), QStringLiteral("name"));
    if (root.contains(QStringLiteral("description")))
        scenario.description = stringAt(root.value(QStringLiteral("description")), QStringLiteral("description"));
    if (root.contains(QStringLiteral("till")))
        scenario.till = TillSettingsReader::at(root.value(QStringLiteral("till")), QStringLiteral("till"));
    if (root.contains(QStringLiteral("documents"))) {
        const QJsonObject documents = objectAt(root.value(QStringLiteral("documents")), QStringLiteral("documents"));
        static const QRegularExpression namePattern(QStringLiteral("^[A-Za-z0-9_-]{1,40}$"));
        for (auto it = documents.constBegin(); it != documents.constEnd(); ++it) {
            const QString at = child(QStringLiteral("documents"), it.key());
            // Names become part of file names, so they stay plain.
            if (!namePattern.match(it.key()).hasMatch())
                fail(at, QStringLiteral("a document name is 1 to 40 letters, digits, _ or -"));
            scenario.documents << documentAt(it.key(), it.value(), at);
        }
    }
    if (root.contains(QStringLiteral("answers"))) {
        const QJsonArray answers = arrayAt(root.value(QStringLiteral("answers")), QStringLiteral("answers"));
        for (qsizetype i = 0; i < answers.size(); ++i)
            scenario.answers << answerAt(answers.at(i), element(QStringLiteral("answers"), i));
    }
    const QJsonArray actions = arrayAt(required(root, QString(), QStringLiteral("actions")), QStringLiteral("actions"));
    if (actions.isEmpty())
        fail(QStringLiteral("actions"), QStringLiteral("a scenario needs at least one action"));
    for (qsizetype i = 0; i < actions.size(); ++i)
        scenario.actions << actionAt(actions.at(i), element(QStringLiteral("actions"), i), scenario);
    if (root.contains(QStringLiteral("expect"))) {
        scenario.expect = expectationAt(root.value(QStringLiteral("expect")), QStringLiteral("expect"), false);
        for (auto it = scenario.expect.documents.constBegin(); it != scenario.expect.documents.constEnd(); ++it) {
            if (!scenario.document(it.key()))
                fail(child(QStringLiteral("expect.documents"), it.key()), QStringLiteral("no document %1 in documents").arg(quoted(it.key())));
        }
    }
    return scenario;
}

} // namespace

ScenarioParser::ScenarioParser(const QString &fileName)
    : m_fileName(fileName)
{
}

template <typename Value, typename Reader>
std::optional<Value> ScenarioParser::read(const QByteArray &json, const QString &what, Reader reader)
{
    m_error = InputError{m_fileName, QString(), 0, 0, QString()};
    return detail::readJson<Value>(json, what, reader, &m_error);
}

template <typename Value, typename Reader>
std::optional<Value> ScenarioParser::readObject(const QJsonObject &object, Reader reader)
{
    m_error = InputError{m_fileName, QString(), 0, 0, QString()};
    return detail::readObject<Value>(object, reader, &m_error);
}

std::optional<Scenario> ScenarioParser::parse(const QByteArray &json)
{
    return read<Scenario>(json, QStringLiteral("a scenario"), scenarioAt);
}

std::optional<TillSettings> ScenarioParser::parseTillSettings(const QByteArray &json)
{
    m_error = InputError{m_fileName, QString(), 0, 0, QString()};
    return TillSettingsReader::read(json, &m_error);
}

std::optional<PositionSpec> ScenarioParser::parsePosition(const QJsonObject &object)
{
    return readObject<PositionSpec>(object, [](const QJsonObject &position) { return detail::positionAt(position, QString()); });
}

std::optional<PaymentSpec> ScenarioParser::parsePayment(const QJsonObject &object)
{
    return readObject<PaymentSpec>(object, [](const QJsonObject &payment) { return detail::paymentAt(payment, QString(), {}); });
}

std::optional<Scenario> ScenarioParser::parseFile(const QString &path, InputError *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = InputError{path, QString(), 0, 0, QStringLiteral("cannot read the file: %1").arg(file.errorString())};
        return std::nullopt;
    }
    ScenarioParser parser(path);
    std::optional<Scenario> scenario = parser.parse(file.readAll());
    if (error)
        *error = parser.error();
    return scenario;
}

} // namespace till
