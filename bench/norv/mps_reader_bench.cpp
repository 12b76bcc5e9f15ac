#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "readers/mps_reader.hpp"

/// How fast an .mps text in memory becomes an instance; bytes per second is the figure to watch.
namespace {

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string rowName(std::int64_t row) {
    return std::string("R").append(std::to_string(row));
}

/// A set-covering-like instance in the fixed layout: each column stands in 8 rows, two entries a
/// line, the rows at most `reach` apart (0: anywhere). With `blankNames` the column names hold a
/// blank, so that the text is cut at the columns.
std::string makeText(std::int64_t nbColumns, std::int64_t reach, bool blankNames) {
    const std::int64_t nbRows = nbColumns / 4 + 8;
    std::string text = "NAME          GENERATED\nROWS\n N  COST\n";
    for (std::int64_t i = 0; i < nbRows; ++i)
        text.append(" G  R").append(std::to_string(i)).append("\n");
    text += "COLUMNS\n";
    const std::string prefix = blankNames ? "X " : "X";
    const std::uint64_t step = static_cast<std::uint64_t>(reach > 0 ? reach : nbRows / 8);
    std::uint64_t state = 1;
    for (std::int64_t j = 0; j < nbColumns; ++j) {
        const std::string name = padded(prefix + std::to_string(j), 10);
        std::int64_t row = j / 4;
        for (int line = 0; line < 4; ++line) {
            text += "    " + name;
            for (int half = 0; half < 2; ++half) {
                state = state * 6364136223846793005U + 1442695040888963407U;
                row = (row + 1 + static_cast<std::int64_t>((state >> 33U) % step)) % nbRows;
                const std::string value = std::to_string(static_cast<double>(state >> 44U) / 1000);
                text += padded(rowName(row), 10) + padded(value, half == 0 ? 15 : 12);
            }
            text += '\n';
        }
    }
    text += "RHS\n";
    for (std::int64_t i = 0; i < nbRows; ++i) {
        text += "    RHS       " + padded(rowName(i), 10) + "1.0\n";
    }
    return text + "ENDATA\n";
}

void readText(benchmark::State& state, std::int64_t reach, bool blankNames) {
    const norv::InputText input =
        norv::InputText::fromMemory("generated.mps", makeText(state.range(0), reach, blankNames));
    for (auto _ : state) {
        benchmark::DoNotOptimize(norv::readMps(input).entries.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.text().size()));
}

void cutAtBlanks(benchmark::State& state) {
    readText(state, 100, /*blankNames=*/false);
}
void cutAtColumns(benchmark::State& state) {
    readText(state, 100, /*blankNames=*/true);
}
void scatteredRows(benchmark::State& state) {
    readText(state, 0, /*blankNames=*/false);
}

BENCHMARK(cutAtBlanks)->Arg(10'000)->Arg(400'000)->Unit(benchmark::kMillisecond);
BENCHMARK(cutAtColumns)->Arg(10'000)->Arg(400'000)->Unit(benchmark::kMillisecond);
BENCHMARK(scatteredRows)->Arg(400'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
