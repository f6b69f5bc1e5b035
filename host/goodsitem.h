#pragma once

#include "tmc.h"
#include "tmcunit.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QSharedPointer>
#include <QString>
#include <QVariant>

/// One goods position of a document.
///
/// Plug-ins keep their own values on a position in its additional data, one
/// map per namespace ("tessaro", "orvel", …).
class GoodsItem
{
public:
    /// How the position was entered.
    enum InputType {
        Scanner = 1,
        Keyboard = 2,
        ByCode = 5,
    };

    GoodsItem();

    int getPosnum() const { return m_posnum; }
    void setPosnum(int posnum) { m_posnum = posnum; }
    QString getCode() const { return m_code; }
    void setCode(const QString &code) { m_code = code; }
    QString getBarcode() const { return m_barcode; }
    void setBarcode(const QString &barcode) { m_barcode = barcode; }
    QString getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    double getQuantity() const { return m_quantity; }
    /// Sets the quantity entered for the position.
    void setBquant(double quantity) { m_quantity = quantity; }
    double getPrice() const { return m_price; }
    void setPrice(double price) { m_price = price; }
    /// The position's sum after discounts.
    double getSumb() const { return m_sum; }
    void setSumb(double sum) { m_sum = sum; }

    double getVatRate() const { return m_vatRate; }
    void setVatRate(double rate) { m_vatRate = rate; }
    /// Index into the VAT arrays of the rate that applies; -1 when none does.
    int getActualVatIndex() const { return m_actualVatIndex; }
    void setActualVatIndex(int index) { m_actualVatIndex = index; }
    QList<int> getVatCodesArray() const { return m_vatCodes; }
    void setVatCodesArray(const QList<int> &codes) { m_vatCodes = codes; }
    QList<double> getVatSumsArray() const { return m_vatSums; }
    void setVatSumsArray(const QList<double> &sums) { m_vatSums = sums; }

    QString getGoodsKitBarcode() const { return m_goodsKitBarcode; }
    void setGoodsKitBarcode(const QString &barcode) { m_goodsKitBarcode = barcode; }
    QString getInputRawData() const { return m_inputRawData; }
    void setInputRawData(const QString &data) { m_inputRawData = data; }
    QString getExciseMark() const { return m_exciseMark; }
    void setExciseMark(const QString &mark) { m_exciseMark = mark; }
    /// 1 when the barcode was typed in by hand rather than scanned.
    int getBcodeMode() const { return m_bcodeMode; }
    void setBcodeMode(int mode) { m_bcodeMode = mode; }

    int getInputType() const { return m_inputType; }
    void setInputType(int type) { m_inputType = type; }
    /// Whether the position was entered by one of \a types.
    bool checkInputType(const QSet<int> &types) const { return types.contains(m_inputType); }

    QSharedPointer<Tmc> getTmc() const { return m_tmc; }
    void setTmc(const QSharedPointer<Tmc> &tmc) { m_tmc = tmc; }
    QSharedPointer<TmcUnit> getTmcUnit() const { return m_tmcUnit; }
    void setTmcUnit(const QSharedPointer<TmcUnit> &unit) { m_tmcUnit = unit; }

    QVariant getAdditionalData(const QString &nameSpace, const QString &key) const;
    void setAdditionalData(const QString &nameSpace, const QString &key, const QVariant &value);
    /// Every namespace's values, for saving the position.
    QHash<QString, QVariantMap> additionalData() const { return m_additionalData; }
    void setAdditionalData(const QHash<QString, QVariantMap> &data) { m_additionalData = data; }

private:
    int m_posnum = 0;
    QString m_code;
    QString m_barcode;
    QString m_name;
    double m_quantity = 1.0;
    double m_price = 0.0;
    double m_sum = 0.0;
    double m_vatRate = 0.0;
    int m_actualVatIndex = -1;
    QList<int> m_vatCodes;
    QList<double> m_vatSums;
    QString m_goodsKitBarcode;
    QString m_inputRawData;
    QString m_exciseMark;
    int m_bcodeMode = 0;
    int m_inputType = Scanner;
    QSharedPointer<Tmc> m_tmc;
    QSharedPointer<TmcUnit> m_tmcUnit;
    QHash<QString, QVariantMap> m_additionalData;
};

Q_DECLARE_METATYPE(QSharedPointer<GoodsItem>)
