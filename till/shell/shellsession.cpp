#include "shellsession.h"

#include "actionlog.h"
#include "actionplayer.h"
#include "documentsnapshot.h"
#include "reportwriter.h"
#include "scenarioparser.h"
#include "shellfields.h"
#include "terminalcashier.h"
#include "till.h"
#include "tillactions.h"

#include <documentsdao.h>
#include <session.h>
#include <singleton.h>

#include <QTextStream>

namespace till {

namespace {

/// The position or payment in \a object, the JSON ShellFields made of the
/// command's words, read as a scenario's; nothing, after saying why, when
/// the words named no field (\a wordError) or the parser refuses a value.
template <typename Parsed>
std::optional<Parsed> readParsed(const QString &command, const std::optional<QJsonObject> &object, const QString &wordError,
                                 std::optional<Parsed> (ScenarioParser::*parse)(const QJsonObject &), QTextStream *out)
{
    ScenarioParser parser;
    std::optional<Parsed> parsed = object ? (parser.*parse)(*object) : std::nullopt;
    if (!parsed) {
        const InputError error = parser.error();
        const QString why = !object ? wordError : error.path.isEmpty() ? error.message : error.path + QStringLiteral(": ") + error.message;
        *out << command << QStringLiteral(": ") << why << Qt::endl;
    }
    return parsed;
}

} // namespace

ShellSession::ShellSession(const TillDataFolder &folder, QTextStream *in, QTextStream *out)
    : m_folder(folder)
    , m_in(in)
    , m_out(out)
{
}

QString ShellSession::help()
{
    return QStringLiteral(
        "Commands:\n"
        "  new-return                  open a new return document\n"
        "  new-return-by-sale [ID]     start a return by sale (without ID the plug-in asks for the invoice)\n"
        "  card NUMBER                 present the customer's card\n"
        "  input                       start input in the document\n"
        "  coupon NUMBER               add a coupon\n"
        "  add CODE [QTY [PRICE]] [FIELD=VALUE…]\n"
        "                              add a position; QTY and PRICE are typed before it\n"
        "  reason [POSITION]           choose the return reason of the document, or of a position\n"
        "  pay CODE AMOUNT [FIELD=VALUE…]\n"
        "                              add a payment in currency CODE\n"
        "  storno-all                  cancel every position\n"
        "  close                       close the document; shows the return invoice number the service assigned\n"
        "  show                        show the open document and the shift's records\n"
        "  restart                     restart the till (the plug-in starts again, documents are read from disk)\n"
        "  help                        this list\n"
        "  quit                        leave the shell\n"
        "\n"
        "The plug-in takes goods only after a customer card: card NUMBER before add.\n"
        "add fields, as a scenario's position gives them (lists with commas; vat=CODE is the VAT code at\n"
        "index 0, rate= is vatRate, vatsum= is vatSums):\n"
        "  %1\n"
        "pay fields, as a scenario's payment gives them (terminal= is terminalId, operation= is operationId):\n"
        "  %2\n"
        "  e.g. add 100200 2 150 barcode=4600000000017 vat=1 rate=20 vatsum=50; pay 2 230 rrn=412345678901 terminal=T1\n")
        .arg(ShellFields::positionFields().join(QStringLiteral(" ")), ShellFields::paymentFields().join(QStringLiteral(" ")));
}

ExitCode ShellSession::run(const QString &pluginFolder)
{
    TerminalCashier cashier(m_in, m_out);
    ActionLog log;
    Till till(m_folder, &cashier, &log);
    till.setRecorder(m_recorder);
    TillActions actions(&till, &log);
    ActionPlayer player(m_opened, 0, &till, &actions, &log);
    QString error;
    log.begin(0, QStringLiteral("start"), QStringLiteral("the till starts"));
    if (!till.start(pluginFolder, TillSettings(), &error)) {
        *m_out << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    const ActionRecord started = log.finish();
    *m_out << QStringLiteral("Till %1 of store %2, plug-in %3. Type help for the commands.")
                  .arg(till.settings().till, till.settings().store, till.plugin().fileName())
           << Qt::endl;
    const QString details = ReportWriter::details(started);
    if (!details.isEmpty())
        *m_out << details << Qt::endl;
    for (;;) {
        *m_out << (till.currentDocument() ? QStringLiteral("till:%1> ").arg(till.currentDocument()->getId()) : QStringLiteral("till> "))
               << Qt::flush;
        QString line;
        if (!m_in->readLineInto(&line))
            break;
        if (!execute(line.trimmed(), &till, &player))
            break;
    }
    *m_out << Qt::endl;
    return ExitCode::Passed;
}

ScenarioAction ShellSession::newDocument(int type, const QString &saleIdentifier, Till *till, ActionPlayer *player)
{
    DocumentSpec described;
    described.name = QStringLiteral("shell");
    described.type = type;
    described.saleIdentifier = saleIdentifier;
    m_opened.documents = {described};
    QString error;
    player->setRun(till->state().takeRunNumber(&error));
    ScenarioAction action;
    action.type = type == 25 ? ScenarioAction::BackBySale : ScenarioAction::Bind;
    action.document = described.name;
    action.orvel = saleIdentifier.isEmpty();
    return action;
}

std::optional<ScenarioAction> ShellSession::action(const QStringList &words, const QString &line, Till *till, ActionPlayer *player)
{
    const QString command = words.first();
    const auto argument = [&words](int i) { return i < words.size() ? words.at(i) : QString(); };
    const auto number = [&words](int i, bool *ok) { return i < words.size() ? words.at(i).toDouble(ok) : (*ok = false, 0.0); };
    const auto usage = [this](const QString &text) { *m_out << QStringLiteral("usage: ") << text << Qt::endl; };

    ScenarioAction action;
    if (command == QLatin1String("new-return")) {
        action = newDocument(2, QString(), till, player);
    } else if (command == QLatin1String("new-return-by-sale")) {
        action = newDocument(25, argument(1), till, player);
    } else if (command == QLatin1String("card") && words.size() == 2) {
        action.type = ScenarioAction::Card;
        action.number = argument(1);
    } else if (command == QLatin1String("coupon") && words.size() == 2) {
        action.type = ScenarioAction::Coupon;
        action.number = argument(1);
    } else if (command == QLatin1String("input")) {
        action.type = ScenarioAction::Input;
    } else if (command == QLatin1String("add") && words.size() >= 2) {
        // Up to two numbers after the code are QTY and PRICE; field=value words follow.
        std::optional<double> modifiers[2];
        int next = 2;
        for (std::optional<double> &modifier : modifiers) {
            bool isNumber = false;
            const double value = number(next, &isNumber);
            if (!isNumber)
                break;
            modifier = value;
            ++next;
        }
        QString error;
        const std::optional<PositionSpec> position = readParsed(QStringLiteral("add"), ShellFields::position(argument(1), words.mid(next), &error),
                                                              error, &ScenarioParser::parsePosition, m_out);
        if (!position)
            return std::nullopt;
        action.type = ScenarioAction::Add;
        action.position = *position;
        action.quantity = modifiers[0];
        action.price = modifiers[1];
    } else if (command == QLatin1String("reason") && words.size() <= 2) {
        bool ok = true;
        action.type = ScenarioAction::Reason;
        action.reasonForDocument = words.size() == 1;
        action.positionNumber = words.size() == 2 ? argument(1).toInt(&ok) : 0;
        if (!ok) {
            usage(QStringLiteral("reason [POSITION]"));
            return std::nullopt;
        }
    } else if (command == QLatin1String("pay") && words.size() >= 3) {
        QString error;
        const std::optional<PaymentSpec> payment = readParsed(QStringLiteral("pay"), ShellFields::payment(argument(1), argument(2), words.mid(3), &error),
                                                            error, &ScenarioParser::parsePayment, m_out);
        if (!payment)
            return std::nullopt;
        action.type = ScenarioAction::Pay;
        action.payment = *payment;
    } else if (command == QLatin1String("storno-all")) {
        action.type = ScenarioAction::StornoAll;
    } else if (command == QLatin1String("close")) {
        action.type = ScenarioAction::Close;
    } else if (command == QLatin1String("restart")) {
        action.type = ScenarioAction::Restart;
    } else {
        *m_out << QStringLiteral("unknown command or arguments: %1 (help lists the commands)").arg(line) << Qt::endl;
        return std::nullopt;
    }
    return action;
}

bool ShellSession::execute(const QString &line, Till *till, ActionPlayer *player)
{
    const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty())
        return true;
    const QString command = words.first();
    if (command == QLatin1String("quit") || command == QLatin1String("exit"))
        return false;
    if (command == QLatin1String("help")) {
        *m_out << help();
        return true;
    }
    if (command == QLatin1String("show")) {
        if (const auto document = till->currentDocument())
            *m_out << ReportWriter::document(document->getId(), DocumentSnapshot::toJson(*document, till->cardType())) << Qt::endl;
        else
            *m_out << QStringLiteral("  no document is open") << Qt::endl;
        const int shift = Singleton<Session>::instance()->getCurrentShift();
        for (const StorageItem &item : Singleton<DocumentsDao>::instance()->getStorageItems(shift))
            *m_out << QStringLiteral("  shift %1 record %2: %3").arg(shift).arg(item.getName(), item.getValue().simplified()) << Qt::endl;
        return true;
    }

    const std::optional<ScenarioAction> action = this->action(words, line, till, player);
    if (!action)
        return true;
    // The command as typed names the action, on the screen and in a cassette.
    const ActionPlayer::Played played = player->play(*action, 0, false, line);
    *m_out << ReportWriter::progressLine(played.record, 0).section(QLatin1Char(' '), 1) << Qt::endl;
    const QString details = ReportWriter::details(played.record);
    if (!details.isEmpty())
        *m_out << details << Qt::endl;
    if (action->type == ScenarioAction::Close && played.document)
        showReturnInvoice(*played.document, till->cardType());
    return true;
}

void ShellSession::showReturnInvoice(const AbstractDocument &document, int cardType) const
{
    const QJsonObject data = DocumentSnapshot::toJson(document, cardType).value(QStringLiteral("pluginData")).toObject();
    const QString number = data.value(QStringLiteral("invoiceIDRaw")).toString();
    if (!number.isEmpty())
        *m_out << QStringLiteral("  return invoice %1 (invoiceID %2)").arg(number, data.value(QStringLiteral("invoiceID")).toString()) << Qt::endl;
}

} // namespace till
