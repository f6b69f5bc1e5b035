#pragma once

#include <QString>

/// A cashier or another person signed in to the till.
class User
{
public:
    User(int id = 0, const QString &code = QString(), const QString &name = QString());

    int getId() const { return m_id; }
    /// The code the person signs in with.
    QString getCode() const { return m_code; }
    QString getName() const { return m_name; }

private:
    int m_id;
    QString m_code;
    QString m_name;
};
