#pragma once

#include <QString>

namespace till {

/// What is wrong with a JSON input file (a scenario, a data folder's
/// dictionaries.json), and where.
struct InputError
{
    QString file;
    /// JSON path of the faulty value ("actions[3].type"); empty for the whole file.
    QString path;
    /// Line and column (from 1) of a syntax error; 0 when the error has a path instead.
    int line = 0;
    int column = 0;
    QString message;

    bool isEmpty() const { return message.isEmpty(); }

    /// "file:line:column: message" for syntax errors, "file: path: message"
    /// otherwise; its control characters escaped, so that it stays one line.
    QString toString() const;
};

} // namespace till
