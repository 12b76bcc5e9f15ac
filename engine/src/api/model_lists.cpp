#include "api/contract.hpp"

using namespace engine;
using namespace engine::contract;

namespace {

const Objective& requireObjective(ls_solver* solver, int position,
                                  RefusalSite site = RefusalSite::here()) {
    const auto& objectives = requireState(solver, anyState, site).model.objectives();
    const auto size = static_cast<std::int64_t>(objectives.size());
    return objectives[static_cast<std::size_t>(
        requirePosition("objectives", position, size, site))];
}

}  // namespace

void ls_add_constraint(ls_solver* solver, int expr) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, modelling);
        s.model.addConstraint(requireExpression(s, expr));
    });
}

void ls_add_objective(ls_solver* solver, int expr, int direction) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, modelling);
        requireChoice("objective direction", direction, LS_MINIMIZE, LS_MAXIMIZE);
        s.model.addObjective({requireExpression(s, expr), direction == LS_MAXIMIZE});
    });
}

int ls_nb_constraints(ls_solver* solver) {
    return guarded(__func__, 0, [&] {
        return static_cast<int>(requireState(solver, anyState).model.constraints().size());
    });
}

int ls_get_constraint(ls_solver* solver, int position) {
    return guarded(__func__, -1, [&]() -> int {
        const auto& constraints = requireState(solver, anyState).model.constraints();
        const auto size = static_cast<std::int64_t>(constraints.size());
        return constraints[static_cast<std::size_t>(
            requirePosition("constraints", position, size))];
    });
}

int ls_nb_objectives(ls_solver* solver) {
    return guarded(__func__, 0, [&] {
        return static_cast<int>(requireState(solver, anyState).model.objectives().size());
    });
}

int ls_get_objective(ls_solver* solver, int position) {
    return guarded(__func__, -1,
                   [&]() -> int { return requireObjective(solver, position).expression; });
}

int ls_get_objective_direction(ls_solver* solver, int position) {
    return guarded(__func__, -1, [&]() -> int {
        return requireObjective(solver, position).maximise ? LS_MAXIMIZE : LS_MINIMIZE;
    });
}

void ls_close(ls_solver* solver) {
    guarded(__func__, [&] { requireState(solver, modelling).close(); });
}
