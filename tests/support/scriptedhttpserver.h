#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QSslConfiguration>
#include <QString>
#include <QUrl>
#include <QUrlQuery>

#include <functional>
#include <memory>

/// A real HTTP/1.1 server on 127.0.0.1 for tests of blocking HTTP clients.
///
/// The server runs in a thread of its own, so a client under test may block
/// the test's thread while the server answers. It records every request it
/// receives and answers each from a script: the answers queued with enqueue(),
/// in order, and once the queue is empty the responder's answer (by default
/// 200 with an empty body). Connections are kept alive as long as the client
/// wishes, so a test can tell by Request::peerPort whether the client reused one.
///
/// \code
/// ScriptedHttpServer server;
/// QVERIFY(server.start());
/// server.enqueue(ScriptedHttpServer::Answer::json(200, R"({"status":"ok"})"));
/// client.post(server.url("/cart/create"), document, headers);
/// QCOMPARE(server.requests().first().body, expectedBody);
/// \endcode
///
/// All members are called from the test's thread, except the responder, which
/// runs in the server's thread. Destruction stops the server: connections still
/// open, including those left hanging by Answer::hang(), are closed, which ends
/// any exchange still waiting for them.
class ScriptedHttpServer
{
public:
    using Header = QPair<QByteArray, QByteArray>;
    using HeaderList = QList<Header>;

    /// One scripted answer.
    struct Answer
    {
        enum class Kind {
            Reply,  ///< An HTTP answer: status line, headers, Content-Length, body.
            /// Closes the connection without answering. A client that had reused
            /// the connection may send a GET once more on a new one (libcurl
            /// does), which takes the next answer.
            Close,
            Reset,  ///< Resets the connection (TCP RST) without answering; as Close.
            Hang,   ///< Never answers; the connection stays open until the client
                    ///< gives up or the server stops.
        };

        Kind kind = Kind::Reply;
        int status = 200;
        /// Sent as they stand, in order. Content-Length is added unless given,
        /// or unless Transfer-Encoding is (the body then holds its chunks).
        /// "Connection: close" makes the server close the connection after the answer.
        HeaderList headers;
        QByteArray body;

        /// An HTTP answer with \a status, \a body and \a headers.
        static Answer reply(int status, const QByteArray &body = {}, const HeaderList &headers = {});
        /// An HTTP answer whose body is JSON (Content-Type: application/json).
        static Answer json(int status, const QByteArray &body);
        static Answer close();
        static Answer reset();
        static Answer hang();
    };

    /// One request as it arrived.
    struct Request
    {
        QByteArray method;      ///< "GET", "POST", …
        QString path;           ///< Decoded path, without the query.
        QUrlQuery query;
        HeaderList headers;     ///< Every header as sent; the order is not kept.
        QByteArray body;
        quint16 peerPort = 0;   ///< The client's port: one value per connection.

        /// The value of the first header named \a name (case-insensitive); empty when absent.
        QByteArray header(const QByteArray &name) const;
        /// How many headers named \a name (case-insensitive) arrived.
        int headerCount(const QByteArray &name) const;
    };

    /// Makes the answer to a request once the queue is empty. Runs in the server's thread.
    using Responder = std::function<Answer(const Request &)>;

    ScriptedHttpServer();
    ~ScriptedHttpServer();
    ScriptedHttpServer(const ScriptedHttpServer &) = delete;
    ScriptedHttpServer &operator=(const ScriptedHttpServer &) = delete;

    /// Serves HTTPS with \a configuration (certificate and private key) instead
    /// of plain HTTP. Call before start().
    void setTlsConfiguration(const QSslConfiguration &configuration);

    /// Starts listening on 127.0.0.1 at a port the system chooses.
    /// Returns the port, or 0 when the server could not listen.
    quint16 start();
    /// Closes every connection and stops the server's thread. Called on destruction.
    void stop();

    quint16 port() const;
    /// "http://127.0.0.1:<port>" (or https) followed by \a path, which may carry a query.
    QUrl url(const QString &path = QStringLiteral("/")) const;

    /// Queues an answer for the next request still unanswered.
    void enqueue(const Answer &answer);
    /// How many queued answers are still unused.
    int pendingAnswers() const;
    /// Replaces the answer given when the queue is empty.
    void setDefaultAnswer(const Answer &answer);
    /// Replaces the answer given when the queue is empty by one made per request.
    void setResponder(const Responder &responder);

    /// Every request received so far, in the order of arrival.
    QList<Request> requests() const;
    int requestCount() const;
    void clearRequests();
    /// Waits until at least \a count requests have arrived or \a timeout ms passed;
    /// for clients that run in other threads. Returns whether they arrived.
    bool waitForRequests(int count, int timeout = 5000) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
