#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "readers/input_text.hpp"
#include "readers/mps_instance.hpp"

namespace norv {

/// How a model file is to be taken.
struct ReadingSettings {
    /// State the model type "square system".
    bool isSquareSystem = false;
    /// Hand special ordered sets to the link, which refuses them, instead of binaries.
    bool keepsSets = false;
    /// .mps integer columns between markers without any bound go up to infinity, not to 1.
    bool hasOpenIntegers = false;
    /// Which objective of an .nl file counts, from 1; 0: none.
    std::int32_t objective = 1;
};

/// The model as its user wrote it and, where special ordered sets became binaries, the one that the
/// link is to solve in its place; that one begins with the same variables.
struct LoadedModel {
    Model model;
    std::optional<Model> forLink;
    /// Of an .nl file: suffixes whose values the client asks for.
    std::vector<std::string> askedSuffixes;
};

/// Reads an .mps or .nl file, which its content tells apart, and builds the host's model of it.
/// @param environment     outlives the model.
/// @param log             receives warnings, one line about special ordered sets and one about the
///                        model's size.
/// Throws ReadError for a file with faults. Failure (badInput): a square system is wanted and the
/// model has not as many equations as variables, or other rows, sets or an objective; or a member
/// of a set lacks the bound that binaries need.
[[nodiscard]] LoadedModel readModel(const InputText& file, const Environment& environment,
                                    const ReadingSettings& settings, std::ostream& log);

}  // namespace norv
