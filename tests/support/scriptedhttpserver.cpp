#include "scriptedhttpserver.h"

#include "scriptedhttpengine.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QMutex>
#include <QSemaphore>
#include <QThread>
#include <QWaitCondition>

#include <algorithm>

namespace {

ScriptedHttpServer::Answer withoutReply(ScriptedHttpServer::Answer::Kind kind)
{
    ScriptedHttpServer::Answer answer;
    answer.kind = kind;
    return answer;
}

} // namespace

#include <optional>

ScriptedHttpServer::Answer ScriptedHttpServer::Answer::reply(int status, const QByteArray &body,
                                                             const HeaderList &headers)
{
    Answer answer;
    answer.status = status;
    answer.body = body;
    answer.headers = headers;
    return answer;
}

ScriptedHttpServer::Answer ScriptedHttpServer::Answer::json(int status, const QByteArray &body)
{
    return reply(status, body, {{QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/json")}});
}

ScriptedHttpServer::Answer ScriptedHttpServer::Answer::close()
{
    return withoutReply(Kind::Close);
}

ScriptedHttpServer::Answer ScriptedHttpServer::Answer::reset()
{
    return withoutReply(Kind::Reset);
}

ScriptedHttpServer::Answer ScriptedHttpServer::Answer::hang()
{
    return withoutReply(Kind::Hang);
}

QByteArray ScriptedHttpServer::Request::header(const QByteArray &name) const
{
    for (const Header &header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0)
            return header.second;
    }
    return {};
}

int ScriptedHttpServer::Request::headerCount(const QByteArray &name) const
{
    return int(std::count_if(headers.cbegin(), headers.cend(), [&name](const Header &header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    }));
}

struct ScriptedHttpServer::Private
{
    /// Records \a request and picks its answer; called in the server's thread.
    Answer answerFor(const Request &request);

    mutable QMutex mutex;
    mutable QWaitCondition arrived;
    QList<Answer> queue;
    Answer defaultAnswer;
    Responder responder;
    QList<Request> requests;

    std::optional<QSslConfiguration> tls;
    std::unique_ptr<QThread> thread;
    quint16 port = 0;
};

ScriptedHttpServer::Answer ScriptedHttpServer::Private::answerFor(const Request &request)
{
    QMutexLocker lock(&mutex);
    requests.append(request);
    arrived.wakeAll();
    if (!queue.isEmpty())
        return queue.takeFirst();
    if (responder) {
        const Responder respond = responder;
        lock.unlock();
        return respond(request);
    }
    return defaultAnswer;
}

ScriptedHttpServer::ScriptedHttpServer()
    : d(std::make_unique<Private>())
{
}

ScriptedHttpServer::~ScriptedHttpServer()
{
    stop();
}

void ScriptedHttpServer::setTlsConfiguration(const QSslConfiguration &configuration)
{
    d->tls = configuration;
}

quint16 ScriptedHttpServer::start()
{
    if (d->thread)
        return d->port;

    QSemaphore ready;
    quint16 port = 0;
    // The engine is made, used and destroyed in the server's thread; destroying
    // it closes every connection it still holds.
    d->thread.reset(QThread::create([this, &ready, &port] {
        ScriptedHttpEngine engine([this](const Request &request) { return d->answerFor(request); });
        if (d->tls)
            engine.sslSetup(*d->tls);
        port = engine.listen(QHostAddress::LocalHost);
        const bool listening = port != 0;
        ready.release();
        if (listening) {
            QEventLoop loop;
            loop.exec();
        }
    }));
    d->thread->start();
    ready.acquire();

    if (port == 0) {
        d->thread->wait();
        d->thread.reset();
    }
    d->port = port;
    return port;
}

void ScriptedHttpServer::stop()
{
    if (!d->thread)
        return;
    // Ends the thread's event loop, even one that has not started yet.
    d->thread->quit();
    d->thread->wait();
    d->thread.reset();
    d->port = 0;
}

quint16 ScriptedHttpServer::port() const
{
    return d->port;
}

QUrl ScriptedHttpServer::url(const QString &path) const
{
    const QString scheme = d->tls ? QStringLiteral("https") : QStringLiteral("http");
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(d->port).arg(path));
}

void ScriptedHttpServer::enqueue(const Answer &answer)
{
    QMutexLocker lock(&d->mutex);
    d->queue.append(answer);
}

int ScriptedHttpServer::pendingAnswers() const
{
    QMutexLocker lock(&d->mutex);
    return int(d->queue.size());
}

void ScriptedHttpServer::setDefaultAnswer(const Answer &answer)
{
    QMutexLocker lock(&d->mutex);
    d->defaultAnswer = answer;
    d->responder = nullptr;
}

void ScriptedHttpServer::setResponder(const Responder &responder)
{
    QMutexLocker lock(&d->mutex);
    d->responder = responder;
}

QList<ScriptedHttpServer::Request> ScriptedHttpServer::requests() const
{
    QMutexLocker lock(&d->mutex);
    return d->requests;
}

int ScriptedHttpServer::requestCount() const
{
    QMutexLocker lock(&d->mutex);
    return int(d->requests.size());
}

void ScriptedHttpServer::clearRequests()
{
    QMutexLocker lock(&d->mutex);
    d->requests.clear();
}

bool ScriptedHttpServer::waitForRequests(int count, int timeout) const
{
    const QDeadlineTimer deadline(timeout);
    QMutexLocker lock(&d->mutex);
    while (d->requests.size() < count) {
        if (!d->arrived.wait(&d->mutex, deadline))
            return d->requests.size() >= count;
    }
    return true;
}
