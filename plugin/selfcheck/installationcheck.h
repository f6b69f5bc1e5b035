#pragma once

#include <QJsonArray>
#include <QJsonObject>

namespace tessaro {

class Interface;
struct ClientSettings;

/// The plug-in's half of an installation check: everything the plug-in itself
/// does on the way to the service, done by the plug-in's own code and reported
/// as JSON for the till that runs the check.
///
/// - "version": the plug-in's version.
/// - "settings": every plain key the plug-in reads, as the configuration holds
///   it ("text") and as the plug-in takes it ("value"); secrets only as facts
///   about them ("length", "scheme", "blanksAround"); for addresses what makes
///   them unusable ("blanks", "controlCharacters", "pathEndsWithSlash"); for
///   the time-out the one the transport keeps ("transportMs", "longestMs").
/// - "sections": every mapping table and currency list, its keys, the keys the
///   plug-in skips ("ignored") and the table as the plug-in loads it ("map").
/// - "currencies": for each currency code of the option "currencies", its
///   receipt-number mask as the plug-in compiles it and its custom fields.
/// - "token": a token fetched by the client's own token request; its lifetime,
///   never its value.
/// - "signing": when the gateway is on, whether requests are signed and which
///   headers the signature covers.
/// - "request": one read-only request through the client's request path,
///   "/messages/<id>" with an identifier no cart has: the address reached, the
///   answer's status, its body's shape ("answerShape") and size.
///
/// Nothing is written anywhere and nothing but the token request and the
/// messages request reaches the service. A host never runs it: the till's
/// check calls it through tessaro_check_installation().
class InstallationCheck
{
public:
    /// \a options: "currencies" (codes) names the currencies whose settings to
    /// report; "token" and "request" (booleans, default true) say whether
    /// to fetch a token and to send the request; "boundSeconds" (default 10)
    /// bounds each exchange when the configured time-out is not positive,
    /// which would let the check wait without end.
    explicit InstallationCheck(const QJsonObject &options);

    /// Runs the checks on the host configuration installed as Singleton<Config>.
    QJsonObject run() const;

private:
    static QJsonArray settings(const Interface &client);
    static QJsonObject timeoutSetting(const ClientSettings &client);
    static QJsonArray sections(const Interface &client);
    QJsonArray currencies(const Interface &client) const;
    QJsonObject token(Interface &client) const;
    static QJsonObject signing(const Interface &client);
    QJsonObject request(Interface &client, bool tokenMissing) const;

    QJsonObject m_options;
};

} // namespace tessaro

/// The entry point of an installation check in the plug-in module, found by
/// name (tessaro::selfcheck::EntryPoint) in the library file, with the
/// signature tessaro::selfcheck::Entry; a host never calls it. \a options is the JSON
/// text of InstallationCheck's options; \a deliver receives the JSON report
/// (UTF-8, valid only during the call) and \a context. Never throws.
extern "C" Q_DECL_EXPORT void tessaro_check_installation(const char *options,
                                                         void (*deliver)(const char *report, void *context),
                                                         void *context);
