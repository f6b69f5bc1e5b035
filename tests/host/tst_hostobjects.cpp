#include <currenttime.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>
#include <testing/settableclock.h>

#include <QTest>

class TestHostObjects : public QObject
{
    Q_OBJECT

private slots:
    void singletonIsCreatedOnFirstUseAndReset();
    void singletonTakesAnInstalledObject();
    void factoryMakesDefaultObjectsWithoutCreator();
    void factoryHandsOutSubstitute();
};

void TestHostObjects::singletonIsCreatedOnFirstUseAndReset()
{
    Singleton<Session>::reset();
    QVERIFY(!Singleton<Session>::exists());
    Session *first = Singleton<Session>::instance();
    QCOMPARE(Singleton<Session>::instance(), first);
    first->setCurrentShift(42);
    Singleton<Session>::reset();
    QCOMPARE(Singleton<Session>::instance()->getCurrentShift(), 1);
}

void TestHostObjects::singletonTakesAnInstalledObject()
{
    auto *session = new Session;
    session->setCurrentShift(9);
    Singleton<Session>::setInstance(session);
    QCOMPARE(Singleton<Session>::instance(), session);
    Singleton<Session>::reset();
}

void TestHostObjects::factoryMakesDefaultObjectsWithoutCreator()
{
    MockFactory<CurrentTime>::clearCreator();
    const auto a = MockFactory<CurrentTime>::create();
    const auto b = MockFactory<CurrentTime>::create();
    QVERIFY(a != b);
    QVERIFY(!a.dynamicCast<SettableClock>());
}

void TestHostObjects::factoryHandsOutSubstitute()
{
    auto clock = QSharedPointer<SettableClock>::create(QDateTime(QDate(2030, 1, 1), QTime(0, 0), Qt::UTC));
    MockFactory<CurrentTime>::setInstance(clock);
    QCOMPARE(MockFactory<CurrentTime>::create()->now(), QDateTime(QDate(2030, 1, 1), QTime(0, 0), Qt::UTC));
    MockFactory<CurrentTime>::clearCreator();
    QVERIFY(MockFactory<CurrentTime>::create() != clock);
}

QTEST_GUILESS_MAIN(TestHostObjects)
#include "tst_hostobjects.moc"
