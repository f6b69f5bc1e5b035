#pragma once

namespace till {

/// The exit codes of every tessaro-till command (init, run, shell, demo, check,
/// simulate, contract, --version, --help) and of tessaro-till-cart: one table,
/// so that a script reads them alike whatever the command.
enum class ExitCode {
    /// Done, and everything held: every expectation of a scenario, every
    /// invariant of the simulation, the contract, every check; help and version.
    Passed = 0,
    /// Done, and something did not hold: an expectation failed, an invariant
    /// was violated, the contract drifted; the check found warnings only.
    Failed = 1,
    /// A wrong command line or input file (scenario, session, cassette, rules).
    /// The check says this for a failed check too: what the till was given (its
    /// configuration, plug-in or way to the service) is wrong.
    BadInput = 2,
    /// The command could not run: no data folder, no plug-in, a file that
    /// cannot be written, a service or emulator that cannot be reached.
    CannotRun = 3,
};

/// The exit code of a verdict with \a warnings and \a failures, as the check
/// gives it: Passed when everything held, Failed with warnings only, BadInput
/// with a failure, since what the till was given does not let it work.
constexpr ExitCode verdictExitCode(int warnings, int failures)
{
    if (failures > 0)
        return ExitCode::BadInput;
    return warnings > 0 ? ExitCode::Failed : ExitCode::Passed;
}

/// The process exit status for \a code.
constexpr int exitStatus(ExitCode code)
{
    return static_cast<int>(code);
}

} // namespace till
