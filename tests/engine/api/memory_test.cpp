// Memory that runs out: the k-th allocation fails, for every k, in a scenario that builds, closes,
// solves and reads. Each time the first refusal says so, nothing leaks, and the next solve works.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "engine/api/solver_fixture.hpp"

namespace {

/// Allocations until the one that fails; negative: none does.
std::atomic<long> nbUntilFailure{-1};

// NOLINTBEGIN(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): what is replaced here
// cannot be made of itself.
void* allocate(std::size_t size) {
    if (nbUntilFailure >= 0 && nbUntilFailure-- == 0) throw std::bad_alloc();
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

// The engine's library takes these too: they stand in the program. Not inlined, or the compiler
// takes a block of malloc for one of new.
[[gnu::noinline, gnu::visibility("default")]] void* operator new(std::size_t size) {
    return allocate(size);
}
[[gnu::noinline, gnu::visibility("default")]] void* operator new[](std::size_t size) {
    return allocate(size);
}
[[gnu::noinline, gnu::visibility("default")]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline, gnu::visibility("default")]] void operator delete[](void* block) noexcept {
    std::free(block);
}
[[gnu::noinline, gnu::visibility("default")]] void operator delete(void* block,
                                                                   std::size_t) noexcept {
    std::free(block);
}
[[gnu::noinline, gnu::visibility("default")]] void operator delete[](void* block,
                                                                     std::size_t) noexcept {
    std::free(block);
}
// NOLINTEND(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)

namespace {

using namespace lstest;

struct FirstRefusal {
    int code = -1;
    int nbRefusals = 0;
};

void runScenario() {
    const SolverHandle s = makeSolver();
    const EndlessModel model(s.get());
    ls_expr_set_name(s.get(), model.objective, "the objective, with a name that needs memory");
    ls_set_nb_threads(s.get(), 2);
    closeWithLimits(s.get(), 60, 30);
    ls_set_double_objective_threshold(s.get(), 0, -100.0);
    ls_solve(s.get());
    ls_expr_get_double_value(s.get(), model.objective);
    ls_solver_info(s.get(), nullptr, 0);
}

TEST(Memory, RunningOutAnywhereIsReportedAndSurvived) {
    FirstRefusal first;
    ls_set_exception_callback(
        [](int code, const char*, const char*, const char*, int, void* data) {
            auto& refusal = *static_cast<FirstRefusal*>(data);
            if (refusal.nbRefusals++ == 0) refusal.code = code;
        },
        &first);
    long k = 0;
    for (bool isHit = true; isHit; ++k) {
        first = {};
        nbUntilFailure = k;
        runScenario();
        isHit = nbUntilFailure < 0;
        nbUntilFailure = -1;
        // A bonus that is given up silently, as the proof at close, makes no refusal.
        const int expected = isHit && first.nbRefusals > 0 ? LS_ERROR_MEMORY : -1;
        ASSERT_EQ(first.code, expected) << "allocation " << k;
    }
    EXPECT_GT(k, 100) << "the scenario should allocate often";
    ls_set_exception_callback(nullptr, nullptr);
}

}  // namespace
