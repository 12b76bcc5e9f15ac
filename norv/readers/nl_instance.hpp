#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "nonlinear/expression.hpp"
#include "nonlinear/quadratic_form.hpp"
#include "norv/piecewise_linear.hpp"
#include "norv/special_ordered_set.hpp"
#include "readers/nl_header.hpp"

namespace norv {

/// An .nl file as it was understood, before a model is built from it. Numbers are finite but for
/// bounds.

struct NlVariable {
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    double level = 0.0;
};

/// lower <= nonlinear part + linear part <= upper
struct NlRow {
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    NodeIndex expression = noNode;  ///< or nothing nonlinear
};

struct NlEntry {
    std::int32_t row;
    std::int32_t variable;
    double coefficient;
};

struct NlObjective {
    bool maximise = false;
    NodeIndex expression = noNode;
    std::vector<LinearTerm> terms;
};

/// Names from the files beside the model; lists may be shorter than what they name.
struct NlNames {
    std::vector<std::string> rows;  ///< rows, logical rows, objectives
    std::vector<std::string> variables;
};

struct NlInstance {
    NlHeader header;
    std::string path;
    ExpressionStore expressions;
    std::vector<NlVariable> variables;
    std::vector<NlRow> rows;
    std::vector<NodeIndex> logicalRows;   ///< each is to be true
    std::vector<NlObjective> objectives;  ///< in file order
    std::int32_t objective = -1;          ///< the one that counts; -1: none
    LargeVector<NlEntry> entries;         ///< of the rows, in file order
    NlNames names;
    std::vector<SpecialOrderedSet> sets;
    /// Terms f(x) of variables x, in file order. Where the reader was asked to, their values are
    /// variables behind the file's own; elsewhere those numbers are not in use.
    std::vector<PiecewiseLinear> piecewise;
    bool hasValueVariables = false;
    /// Suffixes whose values the client asks the solver for, each once.
    std::vector<std::string> askedSuffixes;
    /// What was read but not taken as it stands, "file: ...".
    std::vector<std::string> warnings;

    /// The name given, or "e1", "e2", … (rows and logical rows count together) where there is none.
    [[nodiscard]] std::string rowName(std::int32_t row) const;
    /// The name given, or "x1", "x2", … where there is none.
    [[nodiscard]] std::string variableName(std::int32_t variable) const;
};

}  // namespace norv
