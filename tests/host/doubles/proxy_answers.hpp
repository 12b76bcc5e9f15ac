#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "hostapi/codes.hpp"

/// Bad answers that the contract of the host's operations permits.

namespace proxy {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double largestInteger = std::numeric_limits<std::int32_t>::max();
constexpr double smallestInteger = std::numeric_limits<std::int32_t>::min();

/// Operations with a number as result that may be bad; all others are trusted.
struct BadNumber {
    std::string_view name;
    double worst;
    double failed;
};
constexpr BadNumber badNumbers[] = {
    {"nmoNDisc", largestInteger, 0},
    {"nmoModelType", 8, -1},
    {"nmoSense", smallestInteger, 1},
    {"nmoOptFile", smallestInteger, 0},
    {"nmoGetVarTypeOne", largestInteger, -1},
    {"nmoGetVarLowerOne", infinity, notANumber},
    {"nmoGetVarUpperOne", -infinity, notANumber},
    {"nmoGetVarLOne", infinity, notANumber},
    {"nmoGetEquTypeOne", largestInteger, -1},
    {"nmoGetRhsOne", -infinity, notANumber},
    {"nmoGetEquOrderOne", 3, -1},
    {"nmoEvalFunc", 1, largestInteger},
    {"nmoObjConst", infinity, notANumber},
    {"nmoObjJacVal", 0, notANumber},
    {"nmoGetObjOrder", 3, -1},
    {"nmoGetHeadnTail", -infinity, notANumber},
    {"nmoModelStat", smallestInteger, 0},
    {"nmoGetVarEquMap", largestInteger, 1},
    {"nevGetDblOpt", infinity, notANumber},
    {"nevGetIntOpt", smallestInteger, -1},
    {"nevThreads", largestInteger, 0},
    {"nevTerminateGet", 1, 1},
    {"optReadDefinition", largestInteger, 1},
    {"optReadParameterFile", largestInteger, 1},
    {"optGetDefinedStr", 1, 0},
    {"optGetIntStr", smallestInteger, largestInteger},
    {"optGetDblStr", notANumber, infinity},
};

/// Settings without which the instance would be another one.
constexpr std::string_view trustedSettings[] = {"nmoIndexBaseSet", "nmoObjStyleSet",
                                                "nmoObjReformSet", "nmoSetNRowPerm"};

/// True for arguments through which an operation answers with numbers.
template <class Argument>
constexpr bool isOutput = std::is_same_v<Argument, std::int32_t*> ||
                          std::is_same_v<Argument, double*> || std::is_same_v<Argument, void**>;

/// Whether operation `name` with these types may be answered badly.
template <class Result, class... Arguments>
bool maySpoil(std::string_view name) {
    if constexpr (std::is_same_v<Result, char*>) return true;
    if constexpr (std::is_void_v<Result> && (isOutput<Arguments> || ...)) return false;
    if constexpr (std::is_void_v<Result>) {
        for (const std::string_view trusted : trustedSettings) {
            if (trusted == name) return false;
        }
        return true;
    }
    if (name == "nmoDict") return true;
    for (const BadNumber& bad : badNumbers) {
        if (bad.name == name) return true;
    }
    return false;
}

/// The bad text: null and untouched, or of full length in the text buffer, the last char* argument.
template <class... Arguments>
char* badText(bool isWorst, Arguments... arguments) {
    char* buffer = nullptr;
    const auto take = [&](auto argument) {
        if constexpr (std::is_same_v<decltype(argument), char*>) buffer = argument;
    };
    (take(arguments), ...);
    if (!isWorst || buffer == nullptr) return nullptr;
    constexpr auto longestText = static_cast<std::size_t>(hostapi::longestText);
    std::memset(buffer, 'w', longestText);
    buffer[longestText] = '\0';
    return buffer;
}

/// The bad answer of operation `name`, for which `maySpoil` holds.
template <class Result, class... Arguments>
Result badAnswer(std::string_view name, bool isWorst, Arguments... arguments) {
    if constexpr (std::is_same_v<Result, char*>) {
        return badText(isWorst, arguments...);
    } else if constexpr (std::is_arithmetic_v<Result>) {
        for (const BadNumber& bad : badNumbers) {
            if (bad.name == name) return static_cast<Result>(isWorst ? bad.worst : bad.failed);
        }
        return Result();
    } else {
        return Result();
    }
}

}  // namespace proxy
