#include "cartsessionrunner.h"

#include "actionlog.h"
#include "documentbuilder.h"
#include "emulatedtill.h"
#include "emulatedtillconstants.h"
#include "faultinjectingrestclient.h"
#include "faultplanner.h"
#include "logwatch.h"
#include "randomcashier.h"
#include "sessiongenerator.h"
#include "simulatedclock.h"
#include "tilldatafolder.h"
#include "tilldialog.h"

#include <client/interface.h>

#include <basicexception.h>
#include <config.h>
#include <emulator/emulator.h>
#include <hostobjects.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>

#include <QJsonArray>

#include <random>

namespace till {

namespace {

constexpr int cardType = 27;

enum class Operation { Create, Customer, Item, Coupon, DeleteCoupon, Quantity, Price, Content, Paid, Cancelled };

QJsonArray cartItems(tessaro::emulator::Emulator &emulator, const QString &uuid)
{
    const auto cart = emulator.state().carts.find(uuid);
    return cart ? cart->toJson().value(QStringLiteral("items")).toArray() : QJsonArray();
}

/// The session's till: a sale with a customer card and payments, the
/// client's configuration, the clock, the dialogs and the REST client.
void installHost(const TillDataFolder &folder, std::mt19937_64 &random)
{
    const QString configFile = folder.writeHostConfig({{QStringLiteral("Tessaro:timeout"), QStringLiteral("1")}}, nullptr);
    Singleton<Config>::setInstance(new Config(configFile));
    auto *session = new Session;
    session->getRegistry().setShopCode(QString::number(emulated::storeNo));
    session->getRegistry().setCashCode(QString::number(emulated::tillNo));
    session->setCurrentUser(QSharedPointer<User>::create(5, QStringLiteral("1005"), QStringLiteral("Иванова А. А.")));
    DocumentSpec sale;
    sale.type = 1;
    sale.card = QStringLiteral("123456789012345678");
    sale.payments << PaymentSpec{1, 150.0, false, {}} << PaymentSpec{2, double(random() % 500), false, {}};
    const auto document = DocumentBuilder(cardType, QString::number(emulated::storeNo)).document(sale, QStringLiteral("cart-sale"), SessionGenerator::epoch());
    session->setCurrentDocument(document);
    Singleton<Session>::setInstance(session);
    MockFactory<CurrentTime>::setInstance(QSharedPointer<SimulatedClock>::create());
}

} // namespace

SessionOutcome CartSessionRunner::run(quint64 seed, double faultRate) const
{
    SessionOutcome outcome;
    outcome.seed = seed;
    std::mt19937_64 random(seed);
    const auto draw = [&random](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
    const auto violate = [&outcome](const QString &invariant, const QString &detail) {
        outcome.violations << InvariantChecker::Violation{invariant, detail};
    };

    tessaro::emulator::EmulatorSettings settings;
    settings.customers.insert(QStringLiteral("67812345678"),
                              QJsonObject{{QStringLiteral("custNo"), 4711}, {QStringLiteral("points"), 150}, {QStringLiteral("allowSale"), 1}});
    settings.invalidCoupons << QStringLiteral("2559999999999");
    EmulatedTill service(settings, EmulatedTill::workFolder() + QStringLiteral("/tessaro-cart-XXXXXX"));
    tessaro::emulator::Emulator &emulator = service.emulator();
    emulator.clock().setNow(SessionGenerator::epoch());
    QString error;
    if (!service.start(&error, EmulatedTill::CurrencyTables::Removed)) {
        violate(QStringLiteral("setup"), error);
        return outcome;
    }
    const TillDataFolder &folder = service.folder();
    LogWatch logs;
    ActionLog log;
    RandomCashier cashier(SessionGenerator::sessionSeed(seed, 1));
    FaultPlanner planner(SessionGenerator::sessionSeed(seed, 2), faultRate, 1000);
    installHost(folder, random);
    MockFactory<Dialog>::setInstance(QSharedPointer<TillDialog>::create(&cashier, &log));
    MockFactory<RestClient>::setCreator(
        [&log, &planner, &emulator] { return QSharedPointer<RestClient>(new FaultInjectingRestClient(&log, &planner, &emulator)); });

    {
        tessaro::Interface client;
        QString uuid;
        const int operations = 5 + draw(25);
        for (int i = 0; i < operations; ++i) {
            const auto operation = uuid.isEmpty() || draw(20) == 0 ? Operation::Create : Operation(1 + draw(9));
            const int journalBefore = emulator.journal().size();
            const int linesBefore = int(cartItems(emulator, uuid).size());
            log.begin(i, QStringLiteral("cart"), QString());
            std::optional<tessaro::CartUpdateResponse> answer;
            QString title;
            try {
                switch (operation) {
                case Operation::Create: {
                    title = QStringLiteral("cart create");
                    const tessaro::CartCreateResponse created = client.cartCreate();
                    if (!created.uuid().isEmpty())
                        uuid = created.uuid();
                    break;
                }
                case Operation::Customer:
                    title = QStringLiteral("customer");
                    client.addCustomer(uuid, draw(2) ? QStringLiteral("123456789012345678") : QStringLiteral("42"));
                    break;
                case Operation::Item: {
                    title = QStringLiteral("item");
                    PositionSpec position;
                    position.code = QStringList{QStringLiteral("1001"), QStringLiteral("1002"), QStringLiteral("100200")}.at(draw(3));
                    position.barcode = draw(2) ? QStringLiteral("4600000000012") : QString();
                    position.quantity = draw(2) ? 1.0 : 2.5;
                    position.price = 100.0;
                    tessaro::PositionData data;
                    answer = client.addItemToCart(uuid, DocumentBuilder::position(position, i + 1), data, draw(2) == 0);
                    break;
                }
                case Operation::Coupon:
                    title = QStringLiteral("coupon");
                    answer = client.addCouponToCart(uuid, draw(2) ? QStringLiteral("2550000000017") : QStringLiteral("2559999999999"), draw(2) == 0);
                    break;
                case Operation::DeleteCoupon:
                    title = QStringLiteral("coupon removal");
                    answer = client.deleteCoupon(uuid, QStringLiteral("2550000000017"));
                    break;
                case Operation::Quantity:
                    title = QStringLiteral("quantity");
                    answer = client.quantityOverwrite(uuid, 1 + draw(3), QList<double>{0.0, 0.0004, 2.0, 1.5}.at(draw(4)),
                                                      tessaro::Interface::DeleteReason(draw(2)));
                    break;
                case Operation::Price:
                    title = QStringLiteral("price");
                    answer = client.priceOverwrite(uuid, 1 + draw(3), QList<double>{50.0, 0.01, 1000.0}.at(draw(3)), 1,
                                                   Singleton<Session>::instance()->getCurrentUser(), 1.0);
                    break;
                case Operation::Content:
                    title = QStringLiteral("cart read");
                    answer = client.cartContent(uuid);
                    break;
                case Operation::Paid:
                    title = QStringLiteral("paid");
                    client.setCartStatusPaid(uuid);
                    break;
                case Operation::Cancelled:
                    title = QStringLiteral("cancelled");
                    client.setCartStatusCancelled(uuid);
                    break;
                }
            } catch (const BasicException &) {
                // The client tells the cashier through the exception: nothing to compare.
                answer.reset();
            }
            const ActionRecord record = log.finish();
            ++outcome.steps;
            const bool told = !record.dialogs.isEmpty();
            if (answer && !told && answer->status() == tessaro::Response::Success && !uuid.isEmpty()) {
                const QJsonArray held = answer->jsonObject().value(QStringLiteral("items")).toArray();
                const QJsonArray service = cartItems(emulator, uuid);
                ++outcome.invariantsChecked;
                if (held != service)
                    violate(QStringLiteral("cart-matches-client"),
                            QStringLiteral("%1: the client holds %2 line(s), the service's cart %3").arg(title).arg(held.size()).arg(service.size()));
            }
            if (operation == Operation::Item) {
                // An item added twice is allowed only when the till lost an answer in between.
                int lost = 0;
                const QList<tessaro::emulator::JournalEntry> entries = emulator.journal().entries().mid(journalBefore);
                for (const tessaro::emulator::JournalEntry &entry : entries) {
                    if (entry.exchange.path.endsWith(QLatin1String("/update")) && !InvariantChecker::answerReceived(entry))
                        ++lost;
                }
                const int added = int(cartItems(emulator, uuid).size()) - linesBefore;
                ++outcome.invariantsChecked;
                if (added > 1 && added - 1 > lost)
                    violate(QStringLiteral("cart-update-applied-once"),
                            QStringLiteral("%1: %2 lines were added with %3 lost answer(s)").arg(title).arg(added).arg(lost));
                outcome.lostAnswers += qMax(0, qMin(added - 1, lost));
            }
            logs.take();
        }
        emulator.releaseHeldConnections();
    }
    HostObjects::resetAll();
    for (const SessionFault &fault : planner.struck())
        ++outcome.faults[fault.kindName()];
    outcome.requests = emulator.journal().size();
    return outcome;
}

} // namespace till
