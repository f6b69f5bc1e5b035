#include "tillapplication.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessaro-till"));
    return till::exitStatus(till::TillApplication(QCoreApplication::arguments()).exec());
}
