#include <gtest/gtest.h>

#include <cmath>

#include "back_ends/exact_back_end.hpp"
#include "engine/known_optima.hpp"
#include "engine/methods/run_methods.hpp"

namespace engine {
namespace {

TEST(Methods, ProveTheKnownOptimaOrLeaveThemOpen) {
    const bool hasBackEnd = exactBackEndAbilities().integer;
    for (const testing::KnownOptimum& known : testing::knownOptima()) {
        testing::MethodsRun run(known.text, 1'000'000);
        run.runAll(/*withExactBackEnds=*/true);
        EXPECT_NE(run.conclusion.outcome, Outcome::Inconsistent) << known.what;
        if (hasBackEnd && known.isProved) {
            EXPECT_EQ(run.conclusion.outcome, Outcome::Optimal) << known.what;
        }
        if (run.conclusion.outcome != Outcome::Optimal) continue;
        ASSERT_TRUE(run.incumbent.hasPoint()) << known.what;
        EXPECT_NEAR(run.objective(), known.optimum,
                    known.tolerance + 1e-5 * std::fabs(known.optimum))
            << known.what;
    }
}

}  // namespace
}  // namespace engine
