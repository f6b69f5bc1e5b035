#include "config.h"

#include <QFileInfo>

namespace {

// "Tessaro:url" is the key "url" of the INI section [Tessaro].
QString settingsKey(const QString &key)
{
    QString path = key;
    const qsizetype colon = path.indexOf(QLatin1Char(':'));
    if (colon >= 0)
        path[colon] = QLatin1Char('/');
    return path;
}

QString toText(const QVariant &value)
{
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

} // namespace

Config::Entry::Entry(const QString &text)
    : m_text(text)
{
}

QList<int> Config::Entry::toIntList() const
{
    QList<int> result;
    const QStringList pieces = toStringList();
    for (const QString &piece : pieces) {
        bool ok = false;
        const int value = piece.toInt(&ok);
        if (ok)
            result << value;
    }
    return result;
}

QStringList Config::Entry::toStringList() const
{
    QStringList result;
    const QStringList pieces = m_text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &piece : pieces) {
        const QString trimmed = piece.trimmed();
        if (!trimmed.isEmpty())
            result << trimmed;
    }
    return result;
}

Config::Config()
    : Config(qEnvironmentVariable("NORVIK_CONFIG"))
{
}

Config::Config(const QString &iniFile)
{
    if (iniFile.isEmpty()) {
        // An empty configuration: a settings object without a backing file.
        m_settings = std::make_unique<QSettings>(QString(), QSettings::IniFormat);
    } else {
        m_settings = std::make_unique<QSettings>(iniFile, QSettings::IniFormat);
    }
}

Config::~Config() = default;

QString Config::fileName() const
{
    return m_settings->fileName();
}

QVariant Config::raw(const QString &key) const
{
    return m_settings->value(settingsKey(key));
}

bool Config::contains(const QString &key) const
{
    return m_settings->contains(settingsKey(key));
}

QString Config::getString(const QString &key, const QString &defaultValue) const
{
    const QVariant value = raw(key);
    return value.isValid() ? toText(value) : defaultValue;
}

int Config::getInt(const QString &key, int defaultValue) const
{
    bool ok = false;
    const int value = getString(key).trimmed().toInt(&ok);
    return ok ? value : defaultValue;
}

qint64 Config::getLongLong(const QString &key, qint64 defaultValue) const
{
    bool ok = false;
    const qint64 value = getString(key).trimmed().toLongLong(&ok);
    return ok ? value : defaultValue;
}

bool Config::getBool(const QString &key, bool defaultValue) const
{
    const QString text = getString(key).trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1") || text == QLatin1String("yes") || text == QLatin1String("on"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0") || text == QLatin1String("no") || text == QLatin1String("off"))
        return false;
    return defaultValue;
}

double Config::getDouble(const QString &key, double defaultValue) const
{
    bool ok = false;
    const double value = getString(key).trimmed().toDouble(&ok);
    return ok ? value : defaultValue;
}

QList<int> Config::getIntList(const QString &key) const
{
    return Entry(getString(key)).toIntList();
}

QStringList Config::getStringList(const QString &key, const QStringList &defaultValue) const
{
    if (!contains(key))
        return defaultValue;
    return Entry(getString(key)).toStringList();
}

QStringList Config::keys(const QString &section) const
{
    m_settings->beginGroup(section);
    QStringList names = m_settings->childKeys();
    m_settings->endGroup();
    return names;
}

void Config::setValue(const QString &key, const QVariant &value)
{
    m_settings->setValue(settingsKey(key), value);
}

void Config::sync()
{
    m_settings->sync();
}
