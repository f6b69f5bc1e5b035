#include "emulator/shiftbook.h"

#include <QJsonObject>
#include <QMutexLocker>

namespace tessaro::emulator {

ShiftBook::ShiftBook(const EmulatorSettings &settings)
    : m_openByDefault(settings.shiftOpenByDefault)
{
    for (const EmulatorSettings::Till &till : settings.tills)
        m_tills.insert({till.storeNo, till.tillNo}, {till.shiftOpen, till.shiftOpen ? 1 : 0, till.nextInvoiceNo});
}

ShiftBook::TillState &ShiftBook::state(int storeNo, int tillNo)
{
    const TillKey key{storeNo, tillNo};
    auto it = m_tills.find(key);
    if (it == m_tills.end())
        it = m_tills.insert(key, {m_openByDefault, m_openByDefault ? 1 : 0, 1});
    return *it;
}

bool ShiftBook::isOpen(int storeNo, int tillNo) const
{
    const QMutexLocker locker(&m_mutex);
    const auto it = m_tills.constFind({storeNo, tillNo});
    return it == m_tills.cend() ? m_openByDefault : it->open;
}

int ShiftBook::open(int storeNo, int tillNo)
{
    const QMutexLocker locker(&m_mutex);
    TillState &till = state(storeNo, tillNo);
    till.open = true;
    return ++till.shiftNo;
}

int ShiftBook::close(int storeNo, int tillNo)
{
    const QMutexLocker locker(&m_mutex);
    TillState &till = state(storeNo, tillNo);
    till.open = false;
    return till.shiftNo;
}

void ShiftBook::setOpen(int storeNo, int tillNo, bool open)
{
    const QMutexLocker locker(&m_mutex);
    state(storeNo, tillNo).open = open;
}

int ShiftBook::shiftNo(int storeNo, int tillNo) const
{
    const QMutexLocker locker(&m_mutex);
    const auto it = m_tills.constFind({storeNo, tillNo});
    if (it != m_tills.cend())
        return it->shiftNo;
    return m_openByDefault ? 1 : 0;
}

QString ShiftBook::takeInvoiceId(int storeNo, int tillNo)
{
    const QMutexLocker locker(&m_mutex);
    const int number = state(storeNo, tillNo).nextInvoiceNo++;
    return QStringLiteral("0/0/%1/%2")
        .arg(QString::number(tillNo).rightJustified(4, QLatin1Char('0')),
             QString::number(number).rightJustified(6, QLatin1Char('0')));
}

QJsonArray ShiftBook::toJson() const
{
    const QMutexLocker locker(&m_mutex);
    QJsonArray array;
    for (auto it = m_tills.cbegin(); it != m_tills.cend(); ++it) {
        array.append(QJsonObject{
            {QStringLiteral("storeNo"), it.key().first},
            {QStringLiteral("tillNo"), it.key().second},
            {QStringLiteral("shiftOpen"), it->open},
            {QStringLiteral("shiftNo"), it->shiftNo},
            {QStringLiteral("nextInvoiceNo"), it->nextInvoiceNo},
        });
    }
    return array;
}

} // namespace tessaro::emulator
