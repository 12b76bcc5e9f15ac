#include "double/optimizer_double.hpp"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <map>
#include <optional>
#include <thread>
#include <tuple>

#include "double/exchange.hpp"
#include "localsolver.hpp"

namespace doubles {

namespace {

struct State {
    ls_exception_callback hook = nullptr;
    void* hookData = nullptr;
    int nbSolvers = 0;
    std::vector<std::vector<std::string>> searches;
    std::size_t nextSearch = 0;
    std::vector<std::tuple<int, ls_callback, void*>> callbacks;
    std::optional<std::string> interruption;
};

State& state() {
    static State instance;
    return instance;
}

void report(int code, const char* text, const char* function) {
    const State& s = state();
    if (s.hook == nullptr) return;
    if (code < 0) s.hook(-code, nullptr, nullptr, nullptr, 0, s.hookData);
    s.hook(code, text, "double", function, 1, s.hookData);
}

void setDecision(ls_solver* solver, const std::string& name, double value) {
    const Silence silence;
    for (int k = 0; k < ls_nb_expressions(solver); ++k) {
        const localsolver::LSExpression e(solver, k);
        if (!e.isDecision() || !e.isNamed() || e.getName() != name) continue;
        return e.isDouble() ? e.setDoubleValue(value)
                            : e.setIntValue(static_cast<std::int64_t>(value));
    }
    throw std::invalid_argument("no decision " + name);
}

const std::map<std::string, std::string> statistics = {{"status", "ls_get_solution_status"},
                                                       {"iterations", "ls_stats_get_nb_iterations"},
                                                       {"seconds", "ls_stats_get_running_time"}};

void runEvent(ls_solver* solver, int type) {
    State& s = state();
    for (const auto& [wanted, callback, userData] : s.callbacks) {
        const Holding inside(isInLink, true);
        if (wanted == type) callback(solver, type, userData);
    }
    if (!s.interruption) return;
    const std::string text = *s.interruption;
    s.interruption.reset();
    report(LS_ERROR_INTERRUPTED, text.c_str(), "ls_solve");
}

void search(ls_solver* solver) {
    State& s = state();
    const std::size_t last = s.searches.size() - 1;
    for (const std::string& word : s.searches[std::min(s.nextSearch++, last)]) {
        const std::size_t equals = word.find('=');
        if (word == "terminate") {
            exchange().answer("nevTerminateGet", "1");
        } else if (word == "wait") {
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
        } else if (word == "lines") {
            std::ifstream trace("trace");
            const auto nbLines = std::count(std::istreambuf_iterator<char>(trace), {}, '\n');
            exchange().tell("lines", std::to_string(nbLines), "");
        } else if (equals == std::string::npos) {
            runEvent(solver, static_cast<int>(numberOf(word)));
        } else if (const auto found = statistics.find(word.substr(0, equals));
                   found != statistics.end()) {
            exchange().answer(found->second, word.substr(equals + 1));
        } else {
            setDecision(solver, word.substr(0, equals), numberOf(word.substr(equals + 1)));
        }
    }
}

template <auto One, auto Other>
constexpr bool same = std::is_same_v<std::integral_constant<decltype(One), One>,
                                     std::integral_constant<decltype(Other), Other>>;

/// One call of a function.
template <auto Function>
struct Call;

template <class R, class... Arguments, R (*Function)(Arguments...)>
struct Call<Function> {
    using Result = R;
    template <std::size_t k>
    using Argument = std::tuple_element_t<k, std::tuple<Arguments...>>;

    const char* name;

    Result operator()(Arguments... arguments) const {
        // Deleting runs in destructors, and without the hook nothing can be reported.
        constexpr bool mayFail =
            !same<Function, &ls_delete_solver> && !same<Function, &ls_set_exception_callback>;
        Exchange& shared = exchange();
        const Holding outside(isInLink, false);
        const Fault fault = shared.isSilent ? Fault::none : shared.faultOf(name, mayFail);
        if (fault != Fault::none) {
            report(fault == Fault::low ? LS_ERROR_CALLER : LS_ERROR_INTERNAL, "planned failure",
                   name);
        }
        const auto real = [this](Arguments... a) { return perform(std::tuple(a...)); };
        return respond<Result>(name, false, real, arguments...);
    }

    /// What becomes of a call that is not answered by the script.
    Result perform(const std::tuple<Arguments...>& all) const {
        State& s = state();
        constexpr std::size_t nb = sizeof...(Arguments);
        if constexpr (same<Function, &ls_set_exception_callback>) {
            std::tie(s.hook, s.hookData) = all;
        } else if constexpr (same<Function, &ls_create_solver>) {
            ++s.nbSolvers;
            s.callbacks.clear();
        } else if constexpr (same<Function, &ls_delete_solver>) {
            s.nbSolvers -= std::get<0>(all) != nullptr ? 1 : 0;
        } else if constexpr (same<Function, &ls_add_callback>) {
            s.callbacks.push_back({std::get<1>(all), std::get<2>(all), std::get<3>(all)});
        }
        if (!s.searches.empty() && !exchange().isSilent) {
            if constexpr (same<Function, &ls_solve>) {
                return search(std::get<0>(all));
            } else if constexpr (same<Function, &ls_interrupt>) {
                return static_cast<void>(s.interruption = std::get<1>(all));
            } else if constexpr (same<Function, &ls_stop> || same<Function, &ls_save_environment>) {
                return;
            } else if constexpr (same<Function, &ls_info> || same<Function, &ls_stats_info> ||
                                 same<Function, &ls_solver_info> ||
                                 same<Function, &ls_solver_to_string>) {
                // A text that does not depend on the engine.
                const auto room = static_cast<std::size_t>(std::get<nb - 1>(all));
                return std::snprintf(std::get<nb - 2>(all), room, "<%s>", name) + 1;
            }
        }
        static const auto real = reinterpret_cast<Result (*)(Arguments...)>(realFunction(name));
        return std::apply(real, all);
    }
};

}  // namespace

void reportError(int code, const char* function) {
    report(code, "planned failure", function);
}

void setSearches(std::vector<std::vector<std::string>> scripts) {
    state().searches = std::move(scripts);
    state().nextSearch = 0;
}

int nbSolvers() {
    return state().nbSolvers;
}

}  // namespace doubles

// Function and parameter names cannot stand in parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define LIST_0(part, name)
#define LIST_1(part, name) part(name, 0)
#define LIST_2(part, name) LIST_1(part, name), part(name, 1)
#define LIST_3(part, name) LIST_2(part, name), part(name, 2)
#define LIST_4(part, name) LIST_3(part, name), part(name, 3)
#define PARAMETER(name, k) doubles::Call<&name>::Argument<k> a##k
#define PASSED(name, k) a##k
#define LS_FUNCTION(name, arity)                                        \
    doubles::Call<&name>::Result name(LIST_##arity(PARAMETER, name)) {  \
        return doubles::Call<&name>{#name}(LIST_##arity(PASSED, name)); \
    }
// NOLINTEND(bugprone-macro-parentheses)
extern "C" {
#include "localsolver_functions.inc"
}
