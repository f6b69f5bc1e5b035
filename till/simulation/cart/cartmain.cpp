#include "cartsessionrunner.h"
#include "simulationcommand.h"
#include "tillapplication.h"

#include <QCoreApplication>

// tessaro-till-cart: the cart mode of tessaro-till simulate, in a program of
// its own because it holds the plug-in's client code itself.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessaro-till-cart"));
    till::SimulationCommand::setPlayer([](quint64 seed, double faultRate) { return till::CartSessionRunner().run(seed, faultRate); });
    QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2 || arguments.at(1) != QLatin1String("simulate"))
        arguments.insert(1, QStringLiteral("simulate"));
    return till::exitStatus(till::TillApplication(arguments).exec());
}
