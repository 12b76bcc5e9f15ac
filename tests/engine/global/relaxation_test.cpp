#include "global/relaxation.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "back_ends/simplex.hpp"
#include "engine/random_models.hpp"
#include "global/bound_tightening.hpp"
#include "global/cones.hpp"
#include "global/convex_tangents.hpp"
#include "global/safe_bound.hpp"
#include "global/spatial_tree.hpp"

namespace engine {
namespace {

/// A random model with constraints and an objective from all operators.
std::string randomModel(testing::RandomModels& random, bool withReals) {
    std::string text = random.decisions(withReals);
    if (withReals && random.below(3) == 0) text += random.switchedDecision();
    for (int i = random.below(3); i > 0; --i) {
        text += (random.below(2) == 0 ? "leq(" : "geq(") + random.expression(2) + "," +
                random.linear(false) + ");";
    }
    if (random.below(3) == 0) text += random.expression(2) + ";";
    return text + (random.below(2) == 0 ? "minimise " : "maximise ") + random.expression(3) + ";";
}

struct Relaxed {
    explicit Relaxed(const std::string& text) : model(text), propagator(model.model) {
        if (!propagator.start(model.model.domain, 1'000'000)) return;
        std::vector<Value> values;
        judge(model.model, testing::startOf(model.model), values);
        factorable = factorableModelOf(model.model, propagator, values);
    }
    testing::ModelText model;
    Propagator propagator;
    std::optional<FactorableModel> factorable;
};

/// How far `levels` are beyond the rows and bounds, relative to the terms.
double excessOf(const LinearModel& rows, const std::vector<double>& levels) {
    double excess = 0.0;
    const auto note = [&excess](double value, double lower, double upper, double size) {
        excess = std::max({excess, (lower - value) / size, (value - upper) / size});
    };
    for (std::size_t j = 0; j < rows.nbColumns(); ++j) {
        note(levels[j], rows.lower[j], rows.upper[j], 1.0 + std::fabs(levels[j]));
    }
    for (std::size_t i = 0; i < rows.nbRows(); ++i) {
        double value = 0.0;
        double size = 1.0;
        for (auto k = rows.rowStart[i]; k < rows.rowStart[i + 1]; ++k) {
            const auto n = static_cast<std::size_t>(k);
            const double term =
                rows.coefficient[n] * levels[static_cast<std::size_t>(rows.column[n])];
            value += term;
            size += std::fabs(term);
        }
        note(value, rows.rowLower[i] - rows.tolerance[i], rows.rowUpper[i] + rows.tolerance[i],
             size);
    }
    return excess;
}

TEST(Relaxations, HoldAtEveryFeasiblePointOfEveryBox) {
    testing::RandomModels random(7);
    int nbPoints = 0;
    std::size_t nbCones = 0;
    for (int trial = 0; trial < 1500; ++trial) {
        const std::string text = randomModel(random, /*withReals=*/true);
        Relaxed relaxed(text);
        if (!relaxed.factorable) continue;
        const ClosedModel& model = relaxed.model.model;
        // A box inside the first one.
        const auto d = static_cast<DecisionIndex>(random.below(model.nbDecisions()));
        const Interval own = relaxed.propagator.domainOf(d);
        const double middle = std::floor(0.5 * (own.lower + own.upper));
        if (!relaxed.propagator.restrictDecision(d, {own.lower, middle}, 100'000)) continue;
        Relaxation relaxation(*relaxed.factorable, model, relaxed.propagator);
        ConvexTangents tangents(*relaxed.factorable, model, relaxed.propagator);
        const bool isOpen = relaxation.refresh();
        std::vector<Cut> cuts;
        std::vector<double> anywhere;
        for (std::size_t j = 0; isOpen && j < relaxation.rows().nbColumns(); ++j) {
            const double lower = std::max(relaxation.rows().lower[j], -50.0);
            anywhere.push_back(
                random.uniform(lower, std::max(lower, std::min(relaxation.rows().upper[j], 50.0))));
        }
        if (isOpen) {
            relaxation.separate(anywhere, cuts);
            relaxation.supportAt(anywhere, cuts);
            tangents.separate(anywhere, testing::startOf(model), cuts);
            nbCones += addPlanes(relaxed.factorable->cone, anywhere, Planes::All, cuts);
            for (const Cut& cut : cuts) relaxation.addCut(cut);
        }
        std::vector<Value> values;
        testing::forEachPoint(model, random, [&](const Point& point) {
            if (point[static_cast<std::size_t>(d)].asDouble() > middle) return;
            if (HasFatalFailure() || !judge(model, point, values).feasible) return;
            ASSERT_TRUE(isOpen) << text;
            const std::vector<double> levels = relaxation.levelsAt(values);
            for (const double level : levels) {
                if (!std::isfinite(level)) return;
            }
            ++nbPoints;
            ASSERT_LE(excessOf(relaxation.rows(), levels), 2e-6) << text;
        });
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(nbPoints, 10'000);
    EXPECT_GT(nbCones, 50);
}

TEST(Relaxations, NarrowNoRangeBeyondAFeasiblePoint) {
    const std::unique_ptr<SimplexSolver> simplex = makeSimplexSolver();
    if (!simplex) GTEST_SKIP() << "built without a simplex method";
    testing::RandomModels random(9);
    for (int trial = 0; trial < 300; ++trial) {
        const std::string text = randomModel(random, /*withReals=*/true);
        Relaxed relaxed(text);
        if (!relaxed.factorable) continue;
        const ClosedModel& model = relaxed.model.model;
        Relaxation relaxation(*relaxed.factorable, model, relaxed.propagator);
        BudgetPace pace(20'000'000, [] { return false; });
        const bool isOpen =
            !relaxation.refresh() ||
            tightenByOptimisation(relaxation, *simplex, pace, relaxed.propagator, 100'000, {});
        std::vector<Value> values;
        testing::forEachPoint(model, random, [&](const Point& point) {
            if (HasFatalFailure() || !judge(model, point, values).feasible) return;
            ASSERT_TRUE(isOpen) << text;
            for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
                const Interval domain = relaxed.propagator.domainOf(d);
                const double level = point[static_cast<std::size_t>(d)].asDouble();
                ASSERT_TRUE(domain.lower <= level && level <= domain.upper) << text;
            }
        });
        if (HasFatalFailure()) return;
    }
}

TEST(SafeBounds, AreNeverAboveACostWhateverTheMultipliersAre) {
    testing::RandomModels random(3);
    for (int trial = 0; trial < 2000; ++trial) {
        LinearModel model;
        std::vector<double> cost;
        std::vector<double> at;
        for (int j = 0; j < 4; ++j) {
            model.lower.push_back(random.uniform(-1e3, 0.0));
            model.upper.push_back(random.uniform(0.0, 1e3));
            cost.push_back(random.uniform(-9.0, 9.0));
            at.push_back(random.uniform(model.lower.back(), model.upper.back()));
        }
        std::vector<double> multipliers;
        for (int i = 0; i < 3; ++i) {
            double value = 0.0;
            for (std::size_t j = 0; j < 4; ++j) {
                model.column.push_back(static_cast<std::int32_t>(j));
                model.coefficient.push_back(random.uniform(-5.0, 5.0));
                value += model.coefficient.back() * at[j];
            }
            model.rowStart.push_back(static_cast<std::int32_t>(model.column.size()));
            model.rowLower.push_back(random.below(2) == 0 ? value - 1.0 : -infinity);
            model.rowUpper.push_back(value + random.uniform(0.0, 1.0));
            model.tolerance.push_back(0.5);
            multipliers.push_back(random.uniform(-3.0, 3.0));
        }
        double total = 0.0;
        for (std::size_t j = 0; j < 4; ++j) total += cost[j] * at[j];
        const Box box{model.lower, model.upper};
        const SafeBound strict = safeBoundOf(model, cost, box, multipliers, RowSides::AsTheyStand);
        const SafeBound relaxed = safeBoundOf(model, cost, box, multipliers, RowSides::Relaxed);
        ASSERT_LE(strict.lower, total);
        ASSERT_LE(relaxed.lower, strict.lower);
        for (std::size_t j = 0; j < 4; ++j) {
            const double d = strict.reducedCost[j];
            const double way = d > 0.0 ? at[j] - model.lower[j] : model.upper[j] - at[j];
            ASSERT_LE(strict.lower + std::fabs(d) * way, total + 1e-9);
        }
    }
}

TEST(SpatialTrees, GiveNoBoundThatAPointRefutes) {
    testing::RandomModels random(23);
    int nbClaims = 0;
    for (int trial = 0; trial < 250; ++trial) {
        const std::string text = randomModel(random, /*withReals=*/trial % 2 == 0);
        Relaxed relaxed(text);
        if (!relaxed.factorable) continue;
        const ClosedModel& model = relaxed.model.model;
        const double sign = model.objective[0].maximise ? -1.0 : 1.0;
        CleanPoints points(model, model.domain, "tree");
        BudgetPace pace(4'000'000, [] { return false; });
        double bound = -infinity;
        SpatialSettings settings{.pace = pace};
        settings.onBound = [&](double better) {
            EXPECT_GE(sign * better, bound) << text;
            bound = sign * better;
        };
        const SpatialOutcome found = searchBoxes(model, *relaxed.factorable, relaxed.propagator,
                                                 testing::startOf(model), points, settings);
        const bool isOptimal = found.status == SpatialOutcome::Status::Optimal;
        nbClaims += found.status == SpatialOutcome::Status::Open ? 0 : 1;
        std::vector<Value> values;
        testing::forEachPoint(model, random, [&](const Point& point) {
            const Verdict verdict = judge(model, point, values);
            if (HasFatalFailure() || !verdict.feasible) return;
            const double cost = sign * verdict.objectives[0].asDouble();
            const double near = 5e-6 * (1.0 + std::fabs(cost));
            ASSERT_NE(found.status, SpatialOutcome::Status::Inconsistent) << text;
            ASSERT_GE(cost, bound - near) << text;
            if (!isOptimal) return;
            ASSERT_GE(cost, sign * points.best().verdict().objectives[0].asDouble() - near) << text;
        });
        if (HasFatalFailure()) return;
    }
    // Without the simplex method bounds are those of propagation.
    EXPECT_GT(nbClaims, makeSimplexSolver() ? 100 : 0);
}

}  // namespace
}  // namespace engine
