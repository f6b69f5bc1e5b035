// Loading the built plug-in module through QPluginLoader and initialising it,
// as the host does at start: the first load of the process (the module read,
// relocated and its static data set up) and later ones.
#include <basicplugin.h>
#include <testing/testhost.h>

#include <benchmark/benchmark.h>

#include <QPluginLoader>

namespace {

// Load, instance, init; the plug-in object and the module are released
// outside the timing.
void loadAndInit(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto host = std::make_unique<TestHost>();
        QPluginLoader loader(QStringLiteral(TESSARO_PLUGIN_FILE));
        state.ResumeTiming();

        if (!loader.load()) {
            state.SkipWithError(qPrintable(loader.errorString()));
            break;
        }
        auto *plugin = qobject_cast<BasicPlugin *>(loader.instance());
        if (!plugin) {
            state.SkipWithError("the module's instance is not a host plug-in");
            break;
        }
        plugin->init();

        state.PauseTiming();
        delete plugin;
        loader.unload();
        host.reset();
        state.ResumeTiming();
    }
}

void BM_PluginLoadInitFirst(benchmark::State &state)
{
    loadAndInit(state);
}
// Registered first, so that it runs before anything has loaded the module.
BENCHMARK(BM_PluginLoadInitFirst)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_PluginLoadInit(benchmark::State &state)
{
    loadAndInit(state);
}
BENCHMARK(BM_PluginLoadInit)->Unit(benchmark::kMillisecond);

} // namespace
