#include "privatefile.h"

#include <QFile>
#include <QSaveFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Sets the process's file creation mask for as long as it lives. The file is
// born with the mode it keeps: no moment in which another user could open it.
class CreationMask
{
public:
    explicit CreationMask(mode_t mask)
        : m_previous(::umask(mask))
    {
    }
    ~CreationMask() { ::umask(m_previous); }
    CreationMask(const CreationMask &) = delete;
    CreationMask &operator=(const CreationMask &) = delete;

private:
    mode_t m_previous;
};

} // namespace

bool PrivateFile::write(const QString &path, const QByteArray &content, QString *error)
{
    QSaveFile file(path);
    bool opened = false;
    {
        // QSaveFile creates its temporary file under the mask and, when the
        // target exists, gives it the target's mode.
        const CreationMask ownerOnly(S_IRWXG | S_IRWXO);
        opened = file.open(QIODevice::WriteOnly);
    }
    // commit() misses a write the disk cut short (a full disk), and would put
    // the truncated file in place of the good one: the write is checked here.
    if (opened && file.write(content) == content.size() && file.flush() && file.commit())
        return true;
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return false;
}

bool PrivateFile::append(const QString &path, const QByteArray &content, QString *error)
{
    QFile file(path);
    bool opened = false;
    {
        const CreationMask ownerOnly(S_IRWXG | S_IRWXO);
        opened = file.open(QIODevice::WriteOnly | QIODevice::Append);
    }
    // On the disk before the till goes on, as a replaced file is.
    if (opened && file.write(content) == content.size() && file.flush() && ::fdatasync(file.handle()) == 0)
        return true;
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return false;
}
