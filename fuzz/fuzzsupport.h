#pragma once

/// Drops every Qt message (and so every Log4Qt line) for the rest of the
/// process: a fuzz target logs on most inputs, and the log would drown
/// libFuzzer's own output and slow it down.
void silenceQtMessages();

/// Ends the run as a crash, naming \a what, when \a condition does not hold:
/// libFuzzer then keeps the input that broke the property.
void fuzzRequire(bool condition, const char *what);
