#pragma once

#include <QJsonObject>
#include <QPluginLoader>
#include <QString>

#include <memory>

class BasicLoyaltySystem;
class BasicPlugin;
class QObject;

namespace till {

/// Loads the plug-in as the host does: the library from the plug-in folder
/// through QPluginLoader, its one object, and the two host interfaces the
/// object offers, the plug-in interface ("norvik.AbstractPlugin") and the
/// loyalty system ("BasicLoyaltySystem"). The object is the library's own and
/// lives as long as the process.
class PluginHost
{
public:
    /// The plug-in's library file name.
    static QString libraryName();
    /// The absolute path of the plug-in library in \a folder, which may be
    /// named relative to the working directory: QPluginLoader would look a
    /// relative name up in its library paths instead.
    static QString libraryFile(const QString &folder);
    /// The version that the plug-in library \a file carries as its
    /// what-string ("@(#)TessaroBack x.y.z"), read from the file without
    /// loading it; empty when the file holds none or cannot be read.
    static QString versionOf(const QString &file);

    PluginHost();
    ~PluginHost();

    /// Loads \a folder/libtessaroback.so; on failure \a error says why.
    bool load(const QString &folder, QString *error);

    QString fileName() const;
    /// The plug-in's metadata: "IID", "className", "MetaData".
    QJsonObject metaData() const;
    QObject *object() const { return m_object; }
    BasicPlugin *plugin() const { return m_plugin; }
    /// Null when the plug-in is no loyalty system.
    BasicLoyaltySystem *loyaltySystem() const { return m_loyaltySystem; }

private:
    std::unique_ptr<QPluginLoader> m_loader;
    QObject *m_object = nullptr;
    BasicPlugin *m_plugin = nullptr;
    BasicLoyaltySystem *m_loyaltySystem = nullptr;
};

} // namespace till
