#pragma once

#include <QList>
#include <QSettings>
#include <QStringList>

#include <memory>

/// The host configuration, read from an INI file through QSettings.
///
/// Keys are written "Section:name" ("Tessaro:url"); the key names of a
/// section ("Tessaro.PaymentCodes") are listed by keys(). A value written
/// with commas (0,5) is a list; string reads join it back with commas.
class Config
{
public:
    /// One configuration text (a key name or a value) and its readings.
    class Entry
    {
    public:
        explicit Entry(const QString &text);
        /// The comma-separated integers of the text; pieces that are not
        /// integers are skipped.
        QList<int> toIntList() const;
        QStringList toStringList() const;

    private:
        QString m_text;
    };

    /// The file named by the environment variable NORVIK_CONFIG, or an empty
    /// configuration when it is unset.
    Config();
    explicit Config(const QString &iniFile);
    virtual ~Config();
    Config(const Config &) = delete;
    Config &operator=(const Config &) = delete;

    QString fileName() const;

    bool contains(const QString &key) const;
    QString getString(const QString &key, const QString &defaultValue = QString()) const;
    int getInt(const QString &key, int defaultValue = 0) const;
    qint64 getLongLong(const QString &key, qint64 defaultValue = 0) const;
    bool getBool(const QString &key, bool defaultValue = false) const;
    double getDouble(const QString &key, double defaultValue = 0.0) const;
    QList<int> getIntList(const QString &key) const;
    QStringList getStringList(const QString &key, const QStringList &defaultValue = QStringList()) const;

    /// The names of the keys of \a section (QSettings lists them sorted).
    QStringList keys(const QString &section) const;

    void setValue(const QString &key, const QVariant &value);
    void sync();

private:
    QVariant raw(const QString &key) const;

    std::unique_ptr<QSettings> m_settings;
};
