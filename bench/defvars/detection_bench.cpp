#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <map>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

#include "defvars/detection.hpp"
#include "host/libraries.hpp"
#include "host/operations.hpp"
#include "norv/environment.hpp"
#include "norv/model_builder.hpp"

/// The search for defining equations on families of instances. The counters tell nanoseconds per
/// entry, processor time, and how many variables are defined in the end.

namespace {

using norv::ModelBuilder;

std::int32_t addVariable(ModelBuilder& builder) {
    return builder.addVariable(hostapi::variable_type::continuous, -1e9, 1e9);
}
std::int32_t addFixed(ModelBuilder& builder) {
    return builder.addVariable(hostapi::variable_type::continuous, 1.0, 1.0);
}
std::int32_t addRow(ModelBuilder& builder) {
    return builder.addRow(hostapi::equation_type::equality, 0.0);
}

/// x[t + 1] = a x[t] + u[t] with known inputs u: one definition after the other.
/// @param rowAt  the step that row i is about.
void addSteps(ModelBuilder& builder, std::int32_t nbRows, const std::vector<std::int32_t>& rowAt) {
    std::vector<std::int32_t> states = {addFixed(builder)};
    for (std::int32_t t = 0; t < nbRows; ++t) states.push_back(addVariable(builder));
    std::vector<std::int32_t> inputs;
    inputs.reserve(static_cast<std::size_t>(nbRows));
    for (std::int32_t t = 0; t < nbRows; ++t) inputs.push_back(addFixed(builder));
    for (const std::int32_t step : rowAt) {
        const auto t = static_cast<std::size_t>(step);
        const std::int32_t i = addRow(builder);
        builder.addCoefficient(i, states[t + 1], 1.0);
        builder.addCoefficient(i, states[t], -0.9);
        builder.addCoefficient(i, inputs[t], -1.0);
    }
}

std::vector<std::int32_t> ascending(std::int32_t n) {
    std::vector<std::int32_t> numbers(static_cast<std::size_t>(n));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

void chain(ModelBuilder& builder, std::int32_t nbRows) {
    addSteps(builder, nbRows, ascending(nbRows));
}

void shuffledChain(ModelBuilder& builder, std::int32_t nbRows) {
    std::vector<std::int32_t> rows = ascending(nbRows);
    std::shuffle(rows.begin(), rows.end(), std::mt19937(1));
    addSteps(builder, nbRows, rows);
}

/// The same with free inputs and a free start: every row has three candidates.
void controlledChain(ModelBuilder& builder, std::int32_t nbRows) {
    std::int32_t state = addVariable(builder);
    for (std::int32_t t = 0; t < nbRows; ++t) {
        const std::int32_t next = addVariable(builder);
        const std::int32_t i = addRow(builder);
        builder.addCoefficient(i, next, 1.0);
        builder.addCoefficient(i, state, -0.9);
        builder.addCoefficient(i, addVariable(builder), -1.0);
        state = next;
    }
}

/// Every node is the sum of its two children, the leaves are free.
void tree(ModelBuilder& builder, std::int32_t nbRows) {
    for (std::int32_t k = 0; k < 2 * nbRows + 1; ++k) addVariable(builder);
    for (std::int32_t k = 0; k < nbRows; ++k) {
        const std::int32_t i = addRow(builder);
        builder.addCoefficient(i, k, 1.0);
        builder.addCoefficient(i, 2 * k + 1, -1.0);
        builder.addCoefficient(i, 2 * k + 2, -1.0);
    }
}

/// Three variables in each row, drawn by `draw` from `nbVariables`, given the row.
template <class Draw>
void addRandomRows(ModelBuilder& builder, std::int32_t nbRows, std::int32_t nbVariables,
                   Draw draw) {
    for (std::int32_t j = 0; j < nbVariables; ++j) addVariable(builder);
    for (std::int32_t k = 0; k < nbRows; ++k) {
        const std::int32_t i = addRow(builder);
        for (int term = 0; term < 3; ++term) builder.addCoefficient(i, draw(k), 1.0);
    }
}

/// Twice as many variables as rows, those of a row within a thousand of each other.
void localSparse(ModelBuilder& builder, std::int32_t nbRows) {
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int32_t> near(-500, 500);
    const std::int32_t nbVariables = 2 * nbRows;
    addRandomRows(builder, nbRows, nbVariables, [&](std::int32_t k) {
        return std::clamp(2 * k + near(random), 0, nbVariables - 1);
    });
}

/// Three times as many variables as rows, drawn from everywhere: no memory is near.
void randomSparse(ModelBuilder& builder, std::int32_t nbRows) {
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int32_t> any(0, 3 * nbRows - 1);
    addRandomRows(builder, nbRows, 3 * nbRows, [&](std::int32_t) { return any(random); });
}

/// As many variables as rows, drawn from everywhere: every sixth row would close a cycle.
void randomSquare(ModelBuilder& builder, std::int32_t nbRows) {
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int32_t> any(0, nbRows - 1);
    addRandomRows(builder, nbRows, nbRows, [&](std::int32_t) { return any(random); });
}

/// Layers of a hundred variables, each of which needs three of the layer before, rows at random.
void layers(ModelBuilder& builder, std::int32_t nbRows) {
    constexpr std::int32_t width = 100;
    std::mt19937 random(1);
    for (std::int32_t j = 0; j < width; ++j) addFixed(builder);
    for (std::int32_t j = 0; j < nbRows; ++j) addVariable(builder);
    std::vector<std::int32_t> rows = ascending(nbRows);
    std::shuffle(rows.begin(), rows.end(), random);
    for (const std::int32_t k : rows) {
        const std::int32_t i = addRow(builder);
        builder.addCoefficient(i, k + width, 1.0);
        const std::int32_t layer = k / width * width;
        for (int term = 0; term < 3; ++term)
            builder.addCoefficient(i, layer + static_cast<std::int32_t>(random() % width), -0.1);
    }
}

/// Every variable in every row.
void dense(ModelBuilder& builder, std::int32_t nbRows) {
    for (std::int32_t j = 0; j < nbRows; ++j) addVariable(builder);
    for (std::int32_t k = 0; k < nbRows; ++k) {
        const std::int32_t i = addRow(builder);
        for (std::int32_t j = 0; j < nbRows; ++j) builder.addCoefficient(i, j, 1.0 + i + j);
    }
}

void bindHost() {
    char message[256];
    if (vex::nmoGetReady(message, sizeof message) == 0 ||
        vex::nevGetReady(message, sizeof message) == 0)
        throw std::runtime_error(message);
}

using Family = void (*)(ModelBuilder&, std::int32_t nbRows);

void detect(benchmark::State& state, Family family) {
    bindHost();
    const norv::Environment environment;
    ModelBuilder builder;
    family(builder, static_cast<std::int32_t>(state.range(0)));
    const norv::Model model = builder.finish(environment);
    vex::nmoIndexBaseSet(model.handle(), 0);
    std::vector<double> seconds;
    std::size_t nbDefined = 0;
    while (state.KeepRunning()) {
        vex::DefinedVariables definedVariables;
        vex::DefiningEquations definingEquations;
        const std::clock_t start = std::clock();
        vex::findDefiningEquations(model.handle(), definedVariables, definingEquations);
        seconds.push_back(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        state.SetIterationTime(seconds.back());
        nbDefined = definedVariables.size();
    }
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    state.counters["ns_per_entry"] = *middle * 1e9 / static_cast<double>(model.nbCoefficients());
    state.counters["defined"] = static_cast<double>(nbDefined);
}

/// What any search on `randomSparse` pays to memory: rows come in an order that is not theirs, each
/// reads what is known of its three variables and changes the counts of the rows with one of them.
/// Nothing is decided, no host is asked, and what comes next is known.
void memoryAlone(benchmark::State& state) {
    const auto nbRows = static_cast<std::size_t>(state.range(0));
    const std::size_t nbVariables = 3 * nbRows;
    std::mt19937 random(1);
    std::vector<std::int32_t> entries(3 * nbRows);
    std::vector<std::size_t> starts(nbVariables + 1, 0);
    for (std::int32_t& j : entries) {
        j = static_cast<std::int32_t>(random() % nbVariables);
        ++starts[static_cast<std::size_t>(j) + 1];
    }
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
    std::vector<std::size_t> columns(entries.size());
    for (std::size_t k = 0; k < entries.size(); ++k)
        columns[next[static_cast<std::size_t>(entries[k])]++] = k / 3;
    std::vector<std::int32_t> order = ascending(static_cast<std::int32_t>(nbRows));
    std::shuffle(order.begin(), order.end(), random);
    std::vector<std::int32_t> known(nbVariables, 0);
    std::vector<std::int32_t> counts(nbRows, 3);
    const std::clock_t start = std::clock();
    for (auto _ : state) {
        for (const std::int32_t i : order) {
            const std::int32_t* const row = &entries[3 * static_cast<std::size_t>(i)];
            for (int k = 0; k < 3; ++k) known[static_cast<std::size_t>(row[k])] += i;
            const auto j = static_cast<std::size_t>(row[0]);
            for (std::size_t k = starts[j]; k < starts[j + 1]; ++k) --counts[columns[k]];
        }
        benchmark::ClobberMemory();
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    state.counters["ns_per_entry"] = seconds * 1e9 / static_cast<double>(state.iterations()) /
                                     static_cast<double>(entries.size());
}

void rows(benchmark::internal::Benchmark* benchmark) {
    for (const int nbRows : {10000, 100000, 1000000}) benchmark->Arg(nbRows);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(3);
}

/// As many entries as the sparse families have rows.
void squares(benchmark::internal::Benchmark* benchmark) {
    for (const int nbRows : {100, 316, 1000}) benchmark->Arg(nbRows);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(3);
}

BENCHMARK_CAPTURE(detect, chain, chain)->Apply(rows);
BENCHMARK_CAPTURE(detect, shuffledChain, shuffledChain)->Apply(rows);
BENCHMARK_CAPTURE(detect, controlledChain, controlledChain)->Apply(rows);
BENCHMARK_CAPTURE(detect, tree, tree)->Apply(rows);
BENCHMARK_CAPTURE(detect, layers, layers)->Apply(rows);
BENCHMARK_CAPTURE(detect, localSparse, localSparse)->Apply(rows);
BENCHMARK_CAPTURE(detect, randomSparse, randomSparse)->Apply(rows);
BENCHMARK(memoryAlone)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(detect, randomSquare, randomSquare)->Apply(rows);
BENCHMARK_CAPTURE(detect, dense, dense)->Apply(squares);

}  // namespace

BENCHMARK_MAIN();
