#include "double/optimizer_double.hpp"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "double/exchange.hpp"
#include "host/library_loading.hpp"
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

/// The engine's own function of that name; the program's functions of these names are this file's.
template <class Pointer>
Pointer engineFunction(const char* name) {
    const vex::LibraryLoading& loading = vex::platformLoading();
    static std::string reason;
    static const vex::LibraryHandle engine = loading.open(VEXCC_ENGINE_LIBRARY, reason);
    const vex::AnyFunction address = engine != nullptr ? loading.find(engine, name) : nullptr;
    if (address == nullptr) throw std::runtime_error(std::string(name) + ": " + reason);
    return reinterpret_cast<Pointer>(address);
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

/// A text that does not depend on the engine: the function's name.
int textInstead(const char* name, char* text, int length) {
    const std::string whole = "<" + std::string(name) + ">";
    if (text != nullptr && length > 0)
        text[whole.copy(text, static_cast<std::size_t>(length) - 1)] = '\0';
    return static_cast<int>(whole.size()) + 1;
}

template <auto One, auto Other>
constexpr bool same = std::is_same_v<std::integral_constant<decltype(One), One>,
                                     std::integral_constant<decltype(Other), Other>>;

/// What becomes of a call of `Function` that is not answered by the script.
template <auto Function, class Result, class... Arguments>
Result perform(const char* name, Arguments... arguments) {
    State& s = state();
    const auto forward = [&] {
        static const auto real = engineFunction<Result (*)(Arguments...)>(name);
        return real(arguments...);
    };
    const auto first = std::get<0>(std::tuple(arguments..., nullptr));
    if constexpr (same<Function, &ls_set_exception_callback>) {
        std::tie(s.hook, s.hookData) = std::tuple(arguments...);
    } else if constexpr (same<Function, &ls_create_solver>) {
        ++s.nbSolvers;
        s.callbacks.clear();
    } else if constexpr (same<Function, &ls_delete_solver>) {
        s.nbSolvers -= first != nullptr ? 1 : 0;
    } else if constexpr (same<Function, &ls_add_callback>) {
        s.callbacks.push_back({std::get<1>(std::tuple(arguments...)),
                               std::get<2>(std::tuple(arguments...)),
                               std::get<3>(std::tuple(arguments...))});
    }
    if (s.searches.empty() || exchange().isSilent()) return forward();
    if constexpr (same<Function, &ls_solve>) {
        return search(first);
    } else if constexpr (same<Function, &ls_interrupt>) {
        s.interruption = std::get<1>(std::tuple(arguments...));
    } else if constexpr (same<Function, &ls_info>) {
        return textInstead(name, arguments...);
    } else if constexpr (same<Function, &ls_stats_info> || same<Function, &ls_solver_info> ||
                         same<Function, &ls_solver_to_string>) {
        return textInstead(name, std::get<1>(std::tuple(arguments...)),
                           std::get<2>(std::tuple(arguments...)));
    } else if constexpr (!same<Function, &ls_stop> && !same<Function, &ls_save_environment>) {
        return forward();
    }
}

template <auto Function>
struct Call;

template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct Call<Function> {
    static Result run(const char* name, Arguments... arguments) {
        // Deleting runs in destructors, and without the hook nothing can be reported.
        constexpr bool mayFail =
            !same<Function, &ls_delete_solver> && !same<Function, &ls_set_exception_callback>;
        const auto real = [name](Arguments... a) -> Result {
            return perform<Function, Result>(name, a...);
        };
        Exchange& shared = exchange();
        const Holding outside(isInLink, false);
        const Fault fault = shared.isSilent() ? Fault::none : shared.faultOf(name, mayFail);
        if (fault != Fault::none) {
            report(fault == Fault::low ? LS_ERROR_CALLER : LS_ERROR_INTERNAL, "planned failure",
                   name);
        }
        return respond<Result>(name, false, real, arguments...);
    }
};

template <auto Function, std::size_t Position>
struct ArgumentOf;

template <class Result, class... Arguments, Result (*Function)(Arguments...), std::size_t Position>
struct ArgumentOf<Function, Position> {
    using Type = std::tuple_element_t<Position, std::tuple<Arguments...>>;
};

template <class Result, class... Arguments>
Result resultOf(Result (*)(Arguments...));

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
#define RESULT(name) decltype(doubles::resultOf(&name))
#define ARGUMENT(name, position) doubles::ArgumentOf<&name, position>::Type a##position
#define RUN(name) doubles::Call<&name>::run

#define PARAMETERS_0(name)
#define PARAMETERS_1(name) ARGUMENT(name, 0)
#define PARAMETERS_2(name) PARAMETERS_1(name), ARGUMENT(name, 1)
#define PARAMETERS_3(name) PARAMETERS_2(name), ARGUMENT(name, 2)
#define PARAMETERS_4(name) PARAMETERS_3(name), ARGUMENT(name, 3)
#define ARGUMENTS_0
#define ARGUMENTS_1 , a0
#define ARGUMENTS_2 ARGUMENTS_1, a1
#define ARGUMENTS_3 ARGUMENTS_2, a2
#define ARGUMENTS_4 ARGUMENTS_3, a3
#define LS_FUNCTION(name, arity)                   \
    RESULT(name) name(PARAMETERS_##arity(name)) {  \
        return RUN(name)(#name ARGUMENTS_##arity); \
    }
// NOLINTEND(bugprone-macro-parentheses)
extern "C" {
#include "localsolver_functions.inc"
}
