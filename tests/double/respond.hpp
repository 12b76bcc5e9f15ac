#pragma once

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <queue>
#include <stdexcept>
#include <string_view>
#include <type_traits>

/// How a call becomes text and a scripted text an answer; part of exchange.hpp.

namespace doubles {

/// Reports an error of the optimizer through its hook, which throws. @return if it does not.
void reportError(int code, const char* function);

/// In quotes, with line ends as \\n and other special bytes by number.
std::string quoted(std::string_view text);

/// Doubles always have a point or an exponent, integers never.
inline std::string typedNumber(double value) {
    char buffer[32];
    std::string text(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    return text.find_first_of(".en") == std::string::npos ? text + ".0" : text;
}

/// Arguments in full, except objects, callbacks and places for answers, which show only when null.
template <class Argument>
std::string textOf(Argument argument) {
    if constexpr (std::is_same_v<Argument, double>) {
        return typedNumber(argument);
    } else if constexpr (std::is_integral_v<Argument>) {
        return std::to_string(argument);
    } else if constexpr (std::is_same_v<Argument, const char*>) {
        return argument != nullptr ? quoted(argument) : "null";
    } else {
        return argument != nullptr ? "" : "null";
    }
}

template <class... Arguments>
std::string textOfAll(Arguments... arguments) {
    std::string text;
    [[maybe_unused]] const auto append = [&text](const std::string& piece) {
        if (!piece.empty()) text += (text.empty() ? "" : ", ") + piece;
    };
    (append(textOf(arguments)), ...);
    return text;
}

/// Writes the next piece of an answer through an output argument; leaves the others alone.
template <class Argument>
void write(std::queue<std::string>& pieces, Argument argument) {
    constexpr bool isText = std::is_same_v<Argument, char*>;
    constexpr bool isNumbers =
        std::is_same_v<Argument, double*> || std::is_same_v<Argument, std::int32_t*>;
    if constexpr (isText || isNumbers) {
        if (pieces.empty() || argument == nullptr) return;
        const std::string piece = pieces.front();
        pieces.pop();
        if constexpr (isText) {
            std::memcpy(argument, piece.c_str(), piece.size() + 1);
        } else {
            for (const std::string& word : split(piece, " ")) {
                if (!word.empty())
                    *argument++ = static_cast<std::remove_pointer_t<Argument>>(numberOf(word));
            }
        }
    }
}

/// A scripted answer: what is returned, but for texts, and then what is written.
template <class Result, class... Arguments>
Result decode(const std::string& answer, Arguments... arguments) {
    std::queue<std::string> pieces;
    for (const std::string& piece : split(answer, ",")) pieces.push(piece);
    Result result{};
    if constexpr (std::is_same_v<Result, char*>) {
        const auto take = [&result](auto argument) {
            if constexpr (std::is_same_v<decltype(argument), char*>) result = argument;
        };
        if (answer != "null") (take(arguments), ...);
    } else if constexpr (std::is_arithmetic_v<Result>) {
        result = static_cast<Result>(numberOf(pieces.front()));
        pieces.pop();
    }
    if (answer != "null") (write(pieces, arguments), ...);
    return result;
}

/// What the result's type has to offer to a fault.
template <class Result, class... Arguments>
Result extreme(Fault fault, Arguments... arguments) {
    using Limits = std::numeric_limits<Result>;
    const bool isLow = fault == Fault::low;
    if constexpr (std::is_same_v<Result, char*>)
        return decode<Result>(isLow ? std::string(255, 'w') : "null", arguments...);
    else if constexpr (std::is_floating_point_v<Result>)
        return isLow ? Limits::quiet_NaN() : Limits::infinity();
    else if constexpr (std::is_integral_v<Result>)
        return isLow ? Limits::min() : Limits::max();
    else
        return Result();
}

inline void throwPlanned(const std::string& kind, const char* name) {
    if (kind == "standard") throw std::runtime_error("planned");
    if (kind == "other") throw 7;
    reportError(static_cast<int>(numberOf(kind)), name);
}

template <class Result, class Real, class... Arguments>
Result respond(const char* name, bool mayFail, Real&& real, Arguments... arguments) {
    Exchange& shared = exchange();
    const Holding outside(isInLink, false);
    if (shared.isSilent) return real(arguments...);
    const auto tell = [&](const std::string& result) {
        if (shared.isListening()) shared.tell(name, textOfAll(arguments...), result);
    };
    const Fault fault = shared.faultOf(name, mayFail);
    const std::string* answer =
        shared.hasAnswers() ? shared.answerTo(name, textOfAll(arguments...)) : nullptr;
    if (fault == Fault::thrown || (answer != nullptr && answer->rfind("throw ", 0) == 0)) {
        tell("");
        throwPlanned(answer != nullptr ? answer->substr(6) : "standard", name);
        return Result();
    }
    using Answer = std::conditional_t<std::is_void_v<Result>, std::nullptr_t, Result>;
    const auto result = [&]() -> Result {
        if (fault != Fault::none) return extreme<Result>(fault, arguments...);
        if (answer != nullptr) return static_cast<Result>(decode<Answer>(*answer, arguments...));
        return real(arguments...);
    };
    if constexpr (std::is_void_v<Result>) {
        // Before: what comes of it may be calls that are recorded too.
        tell("");
        result();
    } else {
        using Shown = std::conditional_t<std::is_same_v<Result, char*>, const char*, Result>;
        const Result answered = result();
        const std::string shown = textOf<Shown>(answered);
        tell(shown.empty() ? "" : " = " + shown);
        return answered;
    }
}

}  // namespace doubles
