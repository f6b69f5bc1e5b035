#pragma once

// What the plug-in's installation check and the till that runs it agree on:
// the name of the function the plug-in module exports, its signature, and the
// JSON keys of its options and of its report. Pure constants and types, Qt
// Core only: the till includes this header and links none of the plug-in's
// code; it still meets the plug-in only through the library file it loaded.

#include <QLatin1String>

namespace tessaro::selfcheck {

/// The name of the exported function in the plug-in's library file; a host
/// never calls it.
inline constexpr char EntryPoint[] = "tessaro_check_installation";

/// Receives the JSON report (UTF-8, valid only during the call) and the
/// caller's \a context.
using Deliver = void (*)(const char *report, void *context);
/// The exported function: the options as JSON text, where the report goes,
/// and the context handed back with it. Never throws.
using Entry = void (*)(const char *options, Deliver deliver, void *context);

/// Keys of the options object.
namespace option {
/// Currency codes whose receipt-number masks and custom fields to report.
inline constexpr QLatin1String Currencies("currencies");
/// Whether to fetch a token (default true).
inline constexpr QLatin1String Token("token");
/// Whether to send the read-only request (default true).
inline constexpr QLatin1String Request("request");
/// Seconds each exchange may take when the configured time-out is not positive (default 10).
inline constexpr QLatin1String BoundSeconds("boundSeconds");
} // namespace option

/// Keys of the report object.
namespace report {
/// The plug-in's version.
inline constexpr QLatin1String Version("version");
/// Every plain setting the plug-in reads (an array of objects).
inline constexpr QLatin1String Settings("settings");
/// Every mapping table and currency list (an array of objects).
inline constexpr QLatin1String Sections("sections");
/// Per currency of the option "currencies" (an array of objects).
inline constexpr QLatin1String Currencies("currencies");
/// The token request's outcome.
inline constexpr QLatin1String Token("token");
/// Whether and how requests are signed for the gateway.
inline constexpr QLatin1String Signing("signing");
/// The read-only request's outcome.
inline constexpr QLatin1String Request("request");
/// Instead of all the above: why the check could not run.
inline constexpr QLatin1String Error("error");
} // namespace report

} // namespace tessaro::selfcheck
