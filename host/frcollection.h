#pragma once

#include <QString>

/// The till's fiscal registrars; the stand-in has one.
class FrCollection
{
public:
    /// The registrar's registration number at the tax office.
    qint64 getRegistrationNumber() const { return m_registrationNumber; }
    void setRegistrationNumber(qint64 number) { m_registrationNumber = number; }
    /// The serial number of the registrar's fiscal drive; empty when it reports none.
    QString getFiscalDriveSerial() const { return m_fiscalDriveSerial; }
    void setFiscalDriveSerial(const QString &serial) { m_fiscalDriveSerial = serial; }

private:
    qint64 m_registrationNumber = 0;
    QString m_fiscalDriveSerial;
};
