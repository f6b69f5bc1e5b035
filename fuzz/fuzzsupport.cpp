#include "fuzzsupport.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

void silenceQtMessages()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
}

void fuzzRequire(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "property broken: %s\n", what);
    std::abort();
}
