// What a linear term prod(x, c) in a sum costs to build and to close: time, and bytes counted by
// replacing the process's allocation functions.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

#include "localsolver.h"

namespace {

std::atomic<std::int64_t> bytesNow{0};
std::atomic<std::int64_t> bytesPeak{0};

// NOLINTBEGIN(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): what is replaced here
// cannot be made of itself.
void* countedAllocation(std::size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    const auto now = bytesNow += static_cast<std::int64_t>(malloc_usable_size(block));
    if (now > bytesPeak) bytesPeak = now;
    return block;
}

void countedRelease(void* block) {
    if (block != nullptr) bytesNow -= static_cast<std::int64_t>(malloc_usable_size(block));
    std::free(block);
}
// NOLINTEND(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)

}  // namespace

// The engine's library takes these too: they stand in the program.
[[gnu::visibility("default")]] void* operator new(std::size_t size) {
    return countedAllocation(size);
}
[[gnu::visibility("default")]] void operator delete(void* block) noexcept {
    countedRelease(block);
}
[[gnu::visibility("default")]] void operator delete(void* block, std::size_t) noexcept {
    countedRelease(block);
}

namespace {

/// Rows sum(prod(x, c), ...) <= 1 over floats in [0, 1].
ls_solver* buildRows(std::int64_t nbTerms, std::int64_t termsPerRow, std::int64_t nbDecisions) {
    ls_solver* const s = ls_create_solver();
    std::vector<int> x;
    for (std::int64_t j = 0; j < nbDecisions; ++j) {
        x.push_back(ls_create_expression(s, LS_OP_FLOAT));
        ls_expr_add_operand(s, x.back(), ls_create_double_constant(s, 0.0));
        ls_expr_add_operand(s, x.back(), ls_create_double_constant(s, 1.0));
    }
    for (std::int64_t i = 0; i < nbTerms / termsPerRow; ++i) {
        const int sum = ls_create_expression(s, LS_OP_SUM);
        for (std::int64_t k = 0; k < termsPerRow; ++k) {
            const int term = ls_create_expression(s, LS_OP_PROD);
            const auto j = static_cast<std::size_t>((i * 7919 + k * 104729) % nbDecisions);
            ls_expr_add_operand(s, term, x[j]);
            ls_expr_add_operand(s, term,
                                ls_create_double_constant(s, 1.0 + static_cast<double>(k)));
            ls_expr_add_operand(s, sum, term);
        }
        const int row = ls_create_expression(s, LS_OP_LEQ);
        ls_expr_add_operand(s, row, sum);
        ls_expr_add_operand(s, row, ls_create_double_constant(s, 1.0));
        ls_add_constraint(s, row);
    }
    return s;
}

/// Arguments: linear terms, terms in a row, decisions. A term makes three operands: 700 000 terms
/// are 2.1 million operands, with rows and bounds somewhat more. The bytes are those of the whole
/// model; with long rows and few decisions they are nearly those of the terms alone.
void buildAndClose(benchmark::State& state) {
    const std::int64_t nbTerms = state.range(0);
    double openBytes = 0.0;
    double peakBytes = 0.0;
    double closedBytes = 0.0;
    for (auto run : state) {
        const std::int64_t before = bytesNow;
        bytesPeak = before;
        ls_solver* const s = buildRows(nbTerms, state.range(1), state.range(2));
        openBytes = static_cast<double>(bytesNow - before);
        ls_close(s);
        closedBytes = static_cast<double>(bytesNow - before);
        peakBytes = static_cast<double>(bytesPeak - before);
        state.PauseTiming();
        ls_delete_solver(s);
        state.ResumeTiming();
    }
    const auto terms = static_cast<double>(nbTerms);
    state.counters["B/term open"] = openBytes / terms;
    state.counters["B/term peak"] = peakBytes / terms;
    state.counters["B/term closed"] = closedBytes / terms;
    state.SetItemsProcessed(state.iterations() * nbTerms);
}
BENCHMARK(buildAndClose)
    ->Args({1000, 10, 100})
    ->Args({10000, 10, 1000})
    ->Args({100000, 10, 10000})
    ->Args({700000, 10, 70000})
    ->Args({700000, 1000, 1000})
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
