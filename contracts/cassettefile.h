#pragma once

#include "contracts/cassette.h"

#include <QString>

#include <optional>

namespace tessaro::contracts {

/// Reads and writes cassettes: indented JSON, so that a cassette reads and
/// diffs as text.
class CassetteFile
{
public:
    /// Null when the file cannot be read, is no JSON or no cassette this
    /// program reads; \a error says which, naming the file.
    static std::optional<Cassette> read(const QString &path, QString *error);
    /// Writes the whole cassette or nothing; false with \a error when it cannot.
    static bool write(const Cassette &cassette, const QString &path, QString *error);
};

} // namespace tessaro::contracts
