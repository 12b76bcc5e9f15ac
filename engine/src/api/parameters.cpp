#include "api/contract.hpp"
#include "control/environment_file.hpp"

using namespace engine;
using namespace engine::contract;

namespace {

Phase& requirePhase(Solver& s, int phase, RefusalSite site = RefusalSite::here()) {
    const auto size = static_cast<std::int64_t>(s.phases.size());
    return s.phases[static_cast<std::size_t>(requirePosition("phases", phase, size, site))];
}

/// Sets the parameter `member` after a check of state and range.
template <class Integer>
void setParameter(const char* function, ls_solver* solver, Integer Parameters::*member,
                  const ParameterRange& range, Integer value,
                  RefusalSite site = RefusalSite::here()) {
    guarded(function, [&] {
        Solver& s = requireState(solver, notDuringSolve, site);
        s.parameters.*member = requireInRange(range, value, site);
    });
}

}  // namespace

void ls_set_verbosity(ls_solver* solver, int level) {
    setParameter(__func__, solver, &Parameters::verbosity, verbosityRange, level);
}

void ls_set_nb_threads(ls_solver* solver, int nb_threads) {
    setParameter(__func__, solver, &Parameters::nbThreads, nbThreadsRange, nb_threads);
}

void ls_set_seed(ls_solver* solver, int seed) {
    setParameter(__func__, solver, &Parameters::seed, seedRange, seed);
}

void ls_set_annealing_level(ls_solver* solver, int level) {
    setParameter(__func__, solver, &Parameters::annealingLevel, annealingLevelRange, level);
}

void ls_set_iteration_between_ticks(ls_solver* solver, int64_t nb_iterations) {
    setParameter(__func__, solver, &Parameters::iterationsBetweenTicks, iterationTickRange,
                 nb_iterations);
}

void ls_set_time_between_ticks(ls_solver* solver, int seconds) {
    setParameter(__func__, solver, &Parameters::secondsBetweenTicks, timeTickRange, seconds);
}

void ls_set_double_objective_threshold(ls_solver* solver, int position, double threshold) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, notDuringSolve);
        const auto nbObjectives = static_cast<std::int64_t>(s.model.objectives().size());
        const auto k =
            static_cast<std::size_t>(requirePosition("objectives", position, nbObjectives));
        requireNumber(threshold);
        if (s.parameters.thresholds.size() <= k) s.parameters.thresholds.resize(k + 1);
        s.parameters.thresholds[k] = threshold;
    });
}

int ls_add_phase(ls_solver* solver) {
    return guarded(__func__, -1, [&] {
        Solver& s = requireState(solver, closedOrSolved);
        s.phases.emplace_back();
        return static_cast<int>(s.phases.size()) - 1;
    });
}

void ls_phase_set_time_limit(ls_solver* solver, int phase, int seconds) {
    guarded(__func__, [&] {
        Phase& p = requirePhase(requireState(solver, notDuringSolve), phase);
        p.timeLimit = requireInRange(timeLimitRange, seconds);
    });
}

int ls_phase_get_time_limit(ls_solver* solver, int phase) {
    return guarded(__func__, 0,
                   [&] { return requirePhase(requireState(solver, anyState), phase).timeLimit; });
}

void ls_phase_set_iteration_limit(ls_solver* solver, int phase, int64_t nb_iterations) {
    guarded(__func__, [&] {
        Phase& p = requirePhase(requireState(solver, notDuringSolve), phase);
        p.iterationLimit = requireInRange(iterationLimitRange, nb_iterations);
    });
}

int64_t ls_phase_get_iteration_limit(ls_solver* solver, int phase) {
    return guarded(__func__, std::int64_t{0}, [&] {
        return requirePhase(requireState(solver, anyState), phase).iterationLimit;
    });
}

void ls_save_environment(ls_solver* solver, const char* file_name) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, closedOrSolved);
        requireGiven("file name", file_name != nullptr);
        saveEnvironment(s, file_name);
    });
}
