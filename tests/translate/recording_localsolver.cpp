#include "translate/recording_localsolver.hpp"

#include <charconv>
#include <map>
#include <stdexcept>
#include <tuple>
#include <type_traits>

#include "host/library_loading.hpp"
#include "localsolver.h"

namespace recording {

namespace {

struct State {
    bool recording = false;
    std::vector<std::string> lines;
    std::map<std::string, std::int64_t, std::less<>> answers;
    std::int64_t nbCalls = 0;
    std::int64_t failingCall = 0;  // 0: none
    int failureCode = 0;
    ls_exception_callback hook = nullptr;
    void* hookData = nullptr;
    int nbSolvers = 0;
};

State& state() {
    static State instance;
    return instance;
}

/// The engine's own function of that name; the program's functions of these names are this file's.
vex::AnyFunction realAddress(const char* name) {
    const vex::LibraryLoading& loading = vex::platformLoading();
    static std::string reason;
    static const vex::LibraryHandle engine = loading.open(VEXCC_ENGINE_LIBRARY, reason);
    const vex::AnyFunction address = engine != nullptr ? loading.find(engine, name) : nullptr;
    if (address == nullptr) throw std::runtime_error(std::string(name) + ": " + reason);
    return address;
}

std::string text(double value) {
    char buffer[32];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr};
}
std::string text(std::int64_t value) {
    return std::to_string(value);
}
std::string text(int value) {
    return std::to_string(value);
}
std::string text(const char* value) {
    return value == nullptr ? "null" : '"' + std::string(value) + '"';
}
std::string text(const void* value) {
    return value == nullptr ? "null" : "address";
}
std::string text(char* buffer) {
    return text(static_cast<const void*>(buffer));
}
std::string text(ls_exception_callback) {
    return "hook";
}
std::string text(ls_callback) {
    return "callback";
}

template <class Argument>
void appendArgument(std::string& line, Argument argument) {
    if constexpr (!std::is_same_v<Argument, ls_solver*>) {
        if (line.back() != '(') line += ", ";
        line += text(argument);
    }
}

template <class... Arguments>
void beginLine(const char* name, Arguments... arguments) {
    std::string line = std::string(name) + "(";
    (appendArgument(line, arguments), ...);
    state().lines.push_back(line + ")");
}

/// Reports the planned failure to the hook, which throws; goes on when it does not.
void failWhenPlanned(const char* name) {
    State& s = state();
    if (++s.nbCalls == s.failingCall && s.hook != nullptr)
        s.hook(s.failureCode, "planned failure", __FILE__, name, __LINE__, s.hookData);
}

template <auto One, auto Other>
constexpr bool same = std::is_same_v<std::integral_constant<decltype(One), One>,
                                     std::integral_constant<decltype(Other), Other>>;

/// What happens when the link calls `Function`, one of the ls_ functions.
template <auto Function>
struct Call;

template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct Call<Function> {
    static Result run(const char* name, Arguments... arguments) {
        State& s = state();
        if (s.recording) beginLine(name, arguments...);
        if constexpr (same<Function, &ls_set_exception_callback>)
            std::tie(s.hook, s.hookData) = std::tuple(arguments...);
        else if constexpr (same<Function, &ls_delete_solver>)
            s.nbSolvers -= ((arguments != nullptr) && ...) ? 1 : 0;
        else
            failWhenPlanned(name);
        if constexpr (same<Function, &ls_create_solver>) ++s.nbSolvers;
        if constexpr (std::is_void_v<Result>) {
            if (s.answers.count(name) == 0) real(name)(arguments...);
        } else {
            const Result result = answerOrForward(name, arguments...);
            if (s.recording) s.lines.back() += " = " + text(result);
            return result;
        }
    }

private:
    using Pointer = Result (*)(Arguments...);

    static Pointer real(const char* name) {
        static const auto function = reinterpret_cast<Pointer>(realAddress(name));
        return function;
    }

    static Result answerOrForward(const char* name, Arguments... arguments) {
        if constexpr (std::is_arithmetic_v<Result>) {
            const auto answer = state().answers.find(name);
            if (answer != state().answers.end()) return static_cast<Result>(answer->second);
        }
        return real(name)(arguments...);
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

void reset() {
    State& s = state();
    s.recording = false;
    s.lines.clear();
    s.answers.clear();
    s.nbCalls = 0;
    s.failingCall = 0;
}

void startRecording() {
    state().recording = true;
}
const std::vector<std::string>& lines() {
    return state().lines;
}

void answer(std::string_view function, std::int64_t result) {
    state().answers.insert_or_assign(std::string(function), result);
}

void failCall(std::int64_t call, int code) {
    state().failingCall = call;
    state().failureCode = code;
}

std::int64_t nbCalls() {
    return state().nbCalls;
}
int nbSolvers() {
    return state().nbSolvers;
}

}  // namespace recording

// Function and parameter names cannot stand in parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define RESULT(name) decltype(recording::resultOf(&name))
#define ARGUMENT(name, position) recording::ArgumentOf<&name, position>::Type a##position
#define RUN(name) recording::Call<&name>::run

#define DEFINE_0(name)           \
    RESULT(name) name() {        \
        return RUN(name)(#name); \
    }
#define DEFINE_1(name)                     \
    RESULT(name) name(ARGUMENT(name, 0)) { \
        return RUN(name)(#name, a0);       \
    }
#define DEFINE_2(name)                                        \
    RESULT(name) name(ARGUMENT(name, 0), ARGUMENT(name, 1)) { \
        return RUN(name)(#name, a0, a1);                      \
    }
#define DEFINE_3(name)                                                           \
    RESULT(name) name(ARGUMENT(name, 0), ARGUMENT(name, 1), ARGUMENT(name, 2)) { \
        return RUN(name)(#name, a0, a1, a2);                                     \
    }
#define DEFINE_4(name)                                                                 \
    RESULT(name)                                                                       \
    name(ARGUMENT(name, 0), ARGUMENT(name, 1), ARGUMENT(name, 2), ARGUMENT(name, 3)) { \
        return RUN(name)(#name, a0, a1, a2, a3);                                       \
    }
// NOLINTEND(bugprone-macro-parentheses)
#define LS_FUNCTION(name, arity) DEFINE_##arity(name)
extern "C" {
#include "localsolver_functions.inc"
}
