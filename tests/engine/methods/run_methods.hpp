#pragma once

#include <functional>
#include <string>
#include <utility>

#include "engine/random_models.hpp"
#include "methods/method_list.hpp"

namespace engine::testing {

/// The methods of a model, one after the other in one go, within a budget.
struct MethodsRun {
    explicit MethodsRun(
        const std::string& text, std::int64_t budget = plenty,
        std::function<bool()> shouldStop = [] { return false; })
        : model(text),
          ground(model.model, startOf(model.model), /*seed=*/0),
          incumbent(model.model),
          pace(budget, std::move(shouldStop)) {}

    /// All of the list, from the first stage to the last.
    MethodsRun& runAll(bool withExactBackEnds) {
        for (Stage& stage : makeStages(ground, withExactBackEnds)) runStage(stage);
        return *this;
    }
    /// Those that apply.
    void runStage(const Stage& stage) {
        for (const auto& method : stage) {
            if (conclusion.outcome != Outcome::Open || !method->reasonAgainst().empty()) continue;
            if (incumbent.hasPoint()) method->findings().incumbent.take(incumbent.best());
            method->run(pace);
            conclusion = method->findings().conclusion;
            bound = method->findings().bound;
            if (method->findings().incumbent.hasPoint()) {
                incumbent.take(method->findings().incumbent.best());
            }
        }
    }
    [[nodiscard]] double objective(std::size_t position = 0) const {
        return incumbent.verdict().objectives.at(position).asDouble();
    }

    static constexpr std::int64_t plenty = 20'000'000'000;

    ModelText model;
    Ground ground;
    FeasibleIncumbent incumbent;
    BudgetPace pace;
    Conclusion conclusion;
    std::vector<double> bound;  ///< of the last method
};

}  // namespace engine::testing
