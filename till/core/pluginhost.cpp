#include "pluginhost.h"

#include <basicloyaltysystem.h>
#include <basicplugin.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace till {

QString PluginHost::libraryName()
{
    return QStringLiteral("libtessaroback.so");
}

QString PluginHost::versionOf(const QString &file)
{
    // A plug-in library is a few MiB; a larger file is no plug-in of ours.
    constexpr qint64 largestLibrary = qint64(64) * 1024 * 1024;
    QFile library(file);
    if (library.size() > largestLibrary || !library.open(QIODevice::ReadOnly))
        return {};
    const QByteArray content = library.readAll();
    const QByteArray mark = QByteArrayLiteral("@(#)TessaroBack ");
    const qsizetype start = content.indexOf(mark);
    if (start < 0)
        return {};
    // The version ends at the string's NUL; anything but a short run of
    // version characters before it is not our what-string.
    static const QRegularExpression version(QStringLiteral("^[0-9A-Za-z.+~-]{1,32}$"));
    const qsizetype from = start + mark.size();
    const QString text = QString::fromLatin1(content.mid(from, content.indexOf('\0', from) - from));
    return version.match(text).hasMatch() ? text : QString();
}

QString PluginHost::libraryFile(const QString &folder)
{
    return QFileInfo(QDir(folder).filePath(libraryName())).absoluteFilePath();
}

PluginHost::PluginHost() = default;

PluginHost::~PluginHost() = default;

bool PluginHost::load(const QString &folder, QString *error)
{
    const QString path = libraryFile(folder);
    if (!QFileInfo::exists(path)) {
        if (error)
            *error = QStringLiteral("no plug-in %1 in %2").arg(libraryName(), QDir(folder).absolutePath());
        return false;
    }
    m_loader = std::make_unique<QPluginLoader>(path);
    m_object = m_loader->instance();
    if (!m_object) {
        if (error)
            *error = QStringLiteral("cannot load %1: %2").arg(path, m_loader->errorString());
        return false;
    }
    m_plugin = qobject_cast<BasicPlugin *>(m_object);
    if (!m_plugin) {
        if (error)
            *error = QStringLiteral("%1 offers no plug-in interface \"%2\"").arg(path, QLatin1String(BasicPlugin_iid));
        m_object = nullptr;
        return false;
    }
    m_loyaltySystem = static_cast<BasicLoyaltySystem *>(m_object->qt_metacast("BasicLoyaltySystem"));
    if (!m_loyaltySystem)
        m_loyaltySystem = qobject_cast<BasicLoyaltySystem *>(m_object);
    return true;
}

QString PluginHost::fileName() const
{
    return m_loader ? m_loader->fileName() : QString();
}

QJsonObject PluginHost::metaData() const
{
    return m_loader ? m_loader->metaData() : QJsonObject();
}

} // namespace till
