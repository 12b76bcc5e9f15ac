#include <benchmark/benchmark.h>

#include <string>

#include "norv/environment.hpp"
#include "norv/model_builder.hpp"
#include "readers/nl_model.hpp"
#include "readers/nl_reader.hpp"

/// How fast an .nl text in memory becomes an instance, and an instance a model; bytes of text per
/// second is the figure to watch.
namespace {

std::string header(std::int64_t nbVariables, std::int64_t nbRows, std::int64_t nbEntries) {
    const std::string n = std::to_string(nbVariables);
    const std::string m = std::to_string(nbRows);
    return "g3 1 1 0\n " + n + " " + m + " 1 0 0\n " + m + " 0\n 0 0\n " + n + " 0 0\n" +
           " 0 0 0 1\n 0 0 0 0 0\n " + std::to_string(nbEntries) + " 0\n 0 0\n 0 0 0 0 0\n";
}

/// Rows of `nbTerms` entries: all in the nonlinear part (c * exp(x / 7) + y * z + ...), or all in
/// the linear part.
std::string makeText(std::int64_t nbRows, std::int64_t nbTerms, bool isNonlinear) {
    const std::int64_t nbVariables = nbRows;
    std::string text = header(nbVariables, nbRows, isNonlinear ? 0 : nbRows * nbTerms);
    std::uint64_t state = 1;
    const auto next = [&state](std::int64_t bound) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return std::to_string((state >> 33U) % static_cast<std::uint64_t>(bound));
    };
    for (std::int64_t i = 0; isNonlinear && i < nbRows; ++i) {
        text += "C" + std::to_string(i) + "\no54\n" + std::to_string(2 * nbTerms) + "\n";
        for (std::int64_t k = 0; k < nbTerms; ++k) {
            text += "o2\nn" + next(100) + "." + next(100000) + "\no44\no3\nv" + next(nbVariables) +
                    "\nn7\no2\nv" + next(nbVariables) + "\nv" + next(nbVariables) + "\n";
        }
    }
    text += "O0 0\nn0\nr\n";
    for (std::int64_t i = 0; i < nbRows; ++i) text += "1 " + next(1000) + "\n";
    text += "b\n";
    for (std::int64_t j = 0; j < nbVariables; ++j) text += "0 0 " + next(1000) + "\n";
    for (std::int64_t i = 0; !isNonlinear && i < nbRows; ++i) {
        text += "J" + std::to_string(i) + " " + std::to_string(nbTerms) + "\n";
        for (std::int64_t k = 0; k < nbTerms; ++k)
            text += next(nbVariables) + " " + next(100) + "." + next(100000) + "\n";
    }
    return text;
}

void readText(benchmark::State& state, bool isNonlinear) {
    const auto input =
        norv::InputText::fromMemory("generated.nl", makeText(state.range(0), 10, isNonlinear));
    for (auto _ : state) benchmark::DoNotOptimize(norv::readNl(input).rows.data());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.text().size()));
}

void readNonlinear(benchmark::State& state) {
    readText(state, /*isNonlinear=*/true);
}
void readLinear(benchmark::State& state) {
    readText(state, /*isNonlinear=*/false);
}

void makeModel(benchmark::State& state) {
    const auto input = norv::InputText::fromMemory(
        "generated.nl", makeText(state.range(0), 10, /*isNonlinear=*/true));
    const norv::NlInstance instance = norv::readNl(input);
    const norv::Environment environment;
    for (auto _ : state) {
        norv::ModelBuilder builder;
        norv::buildModel(instance, builder);
        benchmark::DoNotOptimize(builder.finish(environment).handle());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.text().size()));
}

void evaluateRows(benchmark::State& state) {
    const auto input = norv::InputText::fromMemory(
        "generated.nl", makeText(state.range(0), 10, /*isNonlinear=*/true));
    norv::ModelBuilder builder;
    norv::buildModel(norv::readNl(input), builder);
    const norv::Environment environment;
    const norv::Model model = builder.finish(environment);
    const std::vector<double> point(static_cast<std::size_t>(model.nbVariables()), 0.5);
    for (auto _ : state) {
        double total = 0.0;
        for (std::int32_t i = 0; i < model.nbRows(); ++i)
            total += model.evaluateRow(i, point).value;
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * model.nbRows());
}

BENCHMARK(readNonlinear)->Arg(1'000)->Arg(50'000)->Unit(benchmark::kMillisecond);
BENCHMARK(readLinear)->Arg(1'000)->Arg(200'000)->Unit(benchmark::kMillisecond);
BENCHMARK(makeModel)->Arg(50'000)->Unit(benchmark::kMillisecond);
BENCHMARK(evaluateRows)->Arg(50'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
