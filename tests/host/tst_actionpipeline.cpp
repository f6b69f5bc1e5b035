#include <actionpipeline.h>
#include <actionqueuecontroller.h>
#include <contextmanager.h>
#include <singleton.h>
#include <testing/testhost.h>

#include <QTest>

class TestActionPipeline : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void beforeTriggersRunByPriorityThenHostThenAfter();
    void stopOfBeforeTriggerSkipsTheRest();
    void handlerReplacesHostImplementation();
    void disabledTriggersDoNotFire();
    void contextMustMatchUnlessAny();
    void queueRunsThroughPipeline();

private:
    ActionTrigger trigger(EContext::Code context, ActionTrigger::Order order, ActionTrigger::Priority priority,
                          const QString &name, EContext::Result result = EContext::Continue);

    QStringList m_ran;
    BasicPlugin m_plugin;
    ActionPipeline m_pipeline;
    std::unique_ptr<TestHost> m_host;
};

ActionTrigger TestActionPipeline::trigger(EContext::Code context, ActionTrigger::Order order,
                                          ActionTrigger::Priority priority, const QString &name, EContext::Result result)
{
    return ActionTrigger(context, control::StornoAll, order,
                         [this, name, result](const control::Action &) { m_ran << name; return result; },
                         ActionTrigger::Default, priority);
}

void TestActionPipeline::init()
{
    m_host = std::make_unique<TestHost>();
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);
    m_ran.clear();
    m_plugin.deinit();
    m_pipeline = ActionPipeline();
    m_pipeline.addPlugin(&m_plugin);
    m_pipeline.setHostAction(control::StornoAll, [this](const control::Action &) { m_ran << QStringLiteral("host"); return EContext::Continue; });
}

void TestActionPipeline::beforeTriggersRunByPriorityThenHostThenAfter()
{
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::Before, ActionTrigger::Low, QStringLiteral("before-1")));
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::After, ActionTrigger::Normal, QStringLiteral("after-2")));
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::Before, ActionTrigger::High, QStringLiteral("before-3")));
    QCOMPARE(m_pipeline.run(control::Action(control::StornoAll, {})), EContext::Continue);
    QCOMPARE(m_ran, (QStringList{"before-3", "before-1", "host", "after-2"}));
}

void TestActionPipeline::stopOfBeforeTriggerSkipsTheRest()
{
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::Before, ActionTrigger::High, QStringLiteral("refuse"), EContext::Stop));
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::Before, ActionTrigger::Low, QStringLiteral("later")));
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::After, ActionTrigger::Low, QStringLiteral("after")));
    QCOMPARE(m_pipeline.run(control::Action(control::StornoAll, {})), EContext::Stop);
    QCOMPARE(m_ran, QStringList{"refuse"});
}

void TestActionPipeline::handlerReplacesHostImplementation()
{
    m_plugin.addHandler(ActionHandler(EContext::Document, control::StornoAll,
                                      [this](const control::Action &) { m_ran << QStringLiteral("handler"); return EContext::Continue; }, true));
    m_pipeline.run(control::Action(control::StornoAll, {}));
    QCOMPARE(m_ran, QStringList{"handler"});
}

void TestActionPipeline::disabledTriggersDoNotFire()
{
    const int id = m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::Before, ActionTrigger::High, QStringLiteral("off")));
    m_plugin.disableTriggers({id});
    m_pipeline.run(control::Action(control::StornoAll, {}));
    QCOMPARE(m_ran, QStringList{"host"});
    m_plugin.enableTriggers();
    m_ran.clear();
    m_pipeline.run(control::Action(control::StornoAll, {}));
    QCOMPARE(m_ran, (QStringList{"off", "host"}));
}

void TestActionPipeline::contextMustMatchUnlessAny()
{
    m_plugin.addTrigger(trigger(EContext::Payment, ActionTrigger::Before, ActionTrigger::High, QStringLiteral("payment")));
    m_plugin.addTrigger(trigger(EContext::Any, ActionTrigger::Before, ActionTrigger::Low, QStringLiteral("any")));
    m_pipeline.run(control::Action(control::StornoAll, {}));
    QCOMPARE(m_ran, (QStringList{"any", "host"}));
}

void TestActionPipeline::queueRunsThroughPipeline()
{
    m_plugin.addTrigger(trigger(EContext::Document, ActionTrigger::Before, ActionTrigger::High, QStringLiteral("queued")));
    m_pipeline.installAsQueueRunner();
    auto *queue = Singleton<ActionQueueController>::instance();
    queue->addAction(control::Action(control::StornoAll, {}), true);
    QCOMPARE(queue->queuedActions().size(), 1);
    queue->processQueue();
    QCOMPARE(m_ran, (QStringList{"queued", "host"}));
    QCOMPARE(queue->ranActions().size(), 1);
}

QTEST_GUILESS_MAIN(TestActionPipeline)
#include "tst_actionpipeline.moc"
