#include "messagetable.h"

namespace till {

MessageTable::MessageTable()
    : m_texts{
        {QStringLiteral("tessaroNoCardCouponError"), QStringLiteral("Запрещено добавлять купоны, если в чеке нет карты")},
        {QStringLiteral("tessaroNoCardError"), QStringLiteral("Запрещено добавлять товары, если в чеке нет карты")},
        {QStringLiteral("tessaroConflictPayment"), QStringLiteral("В документе есть несовместимые оплаты")},
        {QStringLiteral("tessaroBackBySaleIncorrectId"), QStringLiteral("Некорректный идентификатор оригинального инвойса")},
        {QStringLiteral("tessaroBackReasonListIsEmpty"), QStringLiteral("В таблице причин возврата нет записей")},
        {QStringLiteral("selectedPositionIsNotAProduct"), QStringLiteral("Выбранная позиция не является товаром")},
        {QStringLiteral("tessaroPositionBackReason"), QStringLiteral("Выберите причину возврата для товара")},
        {QStringLiteral("tessaroInvoiceInfo"), QStringLiteral("Ввод информации об оригинальном инвойсе")},
        {QStringLiteral("tessaroProgress"), QStringLiteral("Обращение к сервису Tessaro")},
        {QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена в Tessaro закрыта")},
        {QStringLiteral("tessaroConnectionError"),
         QStringLiteral("Ошибка связи с сервером Tessaro\nНе выключайте кассу! Дождитесь завершения операции")},
        {QStringLiteral("tessaroIncorrectResponse"), QStringLiteral("Некорректный ответ от сервера")},
        {QStringLiteral("tessaroClientNotFoundError"), QStringLiteral("Клиент не найден")},
        {QStringLiteral("tessaroMissedDeleteReason"), QStringLiteral("Не указана причина изменения количества")},
        {QStringLiteral("tessaroGateSignatureError"), QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время")},
        {QStringLiteral("tessaroIncorrectCardNumber"), QStringLiteral("Некорректный номер карты")},
        {QStringLiteral("tessaroUnknownError"), QStringLiteral("Неизвестная ошибка при работе с Tessaro")},
        // The host's own dialogs.
        {QStringLiteral("commonBackReason"), QStringLiteral("Выберите причину возврата")},
        {QStringLiteral("inputQuantity"), QStringLiteral("Введите количество")},
        {QStringLiteral("inputPrice"), QStringLiteral("Введите цену")},
        {QStringLiteral("tillPrinterError"), QStringLiteral("Ошибка принтера: документ не закрыт")},
        {QStringLiteral("tillStoreError"), QStringLiteral("Ошибка записи на диск кассы: данные не сохранены")},
    }
{
}

QString MessageTable::serviceMessageId(const QString &text)
{
    QString key = text.simplified();
    key.remove(QLatin1Char('\''));
    key.remove(QLatin1Char(' '));
    return QStringLiteral("tessaroError") + key.toLower();
}

QString MessageTable::check(const QString &id, const QString &text) const
{
    const auto known = m_texts.constFind(id);
    if (known != m_texts.cend()) {
        if (*known == text)
            return QString();
        return QStringLiteral("the message \"%1\" shows \"%2\" instead of \"%3\"").arg(id, text, *known);
    }
    if (id.startsWith(QLatin1String("tessaroError")) && !text.isEmpty() && id == serviceMessageId(text))
        return QString();
    return QStringLiteral("the message \"%1\" (\"%2\") is not one of the system's messages").arg(id, text);
}

} // namespace till
