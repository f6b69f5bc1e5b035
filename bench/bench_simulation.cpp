// Simulated till sessions (tessaro-till simulate), each in this process: a
// new emulator, a new till on a data folder in memory with the real plug-in,
// restarts within the process, every invariant checked after every step.
// One session per iteration, on one thread; `tessaro-till simulate --jobs N`
// runs N such workers side by side. docs/simulation.md has the figures.
#include "sessiongenerator.h"
#include "sessionrunner.h"

#include <benchmark/benchmark.h>

namespace {

void playSessions(benchmark::State &state, double faultRate, double killRate)
{
    const till::SessionGenerator generator({faultRate, killRate});
    const till::SessionRunner runner(QStringLiteral(TESSARO_BUILD_PLUGIN_DIR));
    quint64 index = 0;
    qint64 steps = 0;
    for (auto _ : state) {
        const till::SessionOutcome outcome = runner.run(generator.generate(till::SessionGenerator::sessionSeed(1, index++)));
        if (outcome.failed()) {
            state.SkipWithError(qPrintable(outcome.violations.first().detail));
            break;
        }
        steps += outcome.steps;
    }
    state.counters["sessions/min"] = benchmark::Counter(double(state.iterations()) * 60.0, benchmark::Counter::kIsRate);
    state.counters["steps/session"] = state.iterations() > 0 ? double(steps) / double(state.iterations()) : 0.0;
}

// The simulation's defaults: a fault on a fifth of the requests (hangs wait out
// the one- or two-second time-out), a restart after a tenth of the actions.
void BM_SimulatedSession(benchmark::State &state)
{
    playSessions(state, 0.2, 0.1);
}
BENCHMARK(BM_SimulatedSession)->Iterations(300)->Unit(benchmark::kMillisecond)->UseRealTime();

// The floor: the same sessions with no faults, so nothing waits for a time-out.
void BM_SimulatedSessionNoFaults(benchmark::State &state)
{
    playSessions(state, 0.0, 0.1);
}
BENCHMARK(BM_SimulatedSessionNoFaults)->Iterations(300)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
