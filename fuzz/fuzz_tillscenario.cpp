// The till simulator's scenario reader over arbitrary bytes: a scenario and a
// till description are either read or refused with an error that says what is
// wrong, never both and never neither, and reading is the same every time.
#include "fuzzsupport.h"

#include "scenarioparser.h"

#include <cstddef>
#include <cstdint>

namespace {

template <typename Value>
void checkOutcome(const std::optional<Value> &value, const till::InputError &error)
{
    fuzzRequire(value.has_value() == error.isEmpty(), "a reading gives a value or an error, not both");
    if (!error.isEmpty())
        fuzzRequire(!error.toString().isEmpty(), "an error renders as text");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), qsizetype(size));

    till::ScenarioParser parser(QStringLiteral("fuzz.json"));
    const auto scenario = parser.parse(json);
    const till::InputError error = parser.error();
    checkOutcome(scenario, error);

    till::ScenarioParser again(QStringLiteral("fuzz.json"));
    fuzzRequire(again.parse(json).has_value() == scenario.has_value() && again.error().toString() == error.toString(),
                "reading the same bytes twice gives the same outcome");

    till::ScenarioParser settings;
    const auto till = settings.parseTillSettings(json);
    checkOutcome(till, settings.error());
    return 0;
}
