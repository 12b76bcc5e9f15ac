#include <benchmark/benchmark.h>

#include <cstdint>

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"

/// From single entries to a compressed instance: appending and `finish`, by number of coefficients.
namespace {

constexpr std::int32_t entriesPerColumn = 8;

/// Column by column, as a reader of .mps files finds them; rows spread over the whole instance.
void buildInstance(benchmark::State& state) {
    const auto nbVariables = static_cast<std::int32_t>(state.range(0)) / entriesPerColumn;
    const std::int32_t nbRows = nbVariables / 4 + entriesPerColumn;
    const norv::Environment environment;
    for (auto _ : state) {
        norv::ModelBuilder builder;
        for (std::int32_t i = 0; i < nbRows; ++i)
            builder.addRow(hostapi::equation_type::greater, 1.0);
        std::uint32_t random = 1;
        for (std::int32_t j = 0; j < nbVariables; ++j) {
            builder.addVariable(hostapi::variable_type::continuous, 0.0, 1.0);
            for (std::int32_t k = 0; k < entriesPerColumn; ++k) {
                random = random * 1664525U + 1013904223U;
                builder.addCoefficient(
                    static_cast<std::int32_t>((random >> 8U) % static_cast<unsigned>(nbRows)), j,
                    1.0 + k);
            }
        }
        benchmark::DoNotOptimize(builder.finish(environment).handle());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(buildInstance)
    ->RangeMultiplier(10)
    ->Range(10'000, 1'000'000)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
