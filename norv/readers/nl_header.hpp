#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "readers/nl_input.hpp"

namespace norv {

/// The ten lines at the top of an .nl file.
///
/// Variables stand in this order, each group continuous first, then integer: nonlinear in both
/// rows and objectives, nonlinear in rows alone, nonlinear in objectives alone; then the linear
/// ones: arcs, others, binary, integer.
struct NlHeader {
    bool isBinary = false;
    bool isBigEndian = false;  ///< of a binary file: the highest byte of a number first
    /// What the first line tells the writer of a solution to repeat; at most 9 numbers.
    std::vector<std::int32_t> options;
    /// One more number to repeat, after options whose second is 3.
    std::optional<double> boundTolerance;
    std::int32_t nbVariables = 0;
    std::int32_t nbRows = 0;  ///< without the logical ones
    std::int32_t nbObjectives = 0;
    std::int32_t nbRanges = 0;
    std::int32_t nbEqualities = 0;
    std::int32_t nbLogicalRows = 0;
    std::int32_t nbNonlinearRows = 0;
    std::int32_t nbNonlinearObjectives = 0;
    std::int32_t nbNonlinearInRows = 0;  ///< the first ones
    std::int32_t nbNonlinearInObjectives =
        0;                               ///< beyond `nbNonlinearInRows`: counts from the first
    std::int32_t nbNonlinearInBoth = 0;  ///< the very first ones
    std::int32_t nbArcs = 0;
    std::int32_t nbFunctions = 0;  ///< imported ones
    std::int32_t nbBinary = 0;     ///< linear ones
    std::int32_t nbInteger = 0;    ///< linear ones
    std::int32_t nbIntegerInBoth = 0;
    std::int32_t nbIntegerInRows = 0;
    std::int32_t nbIntegerInObjectives = 0;
    std::int32_t nbJacobianEntries = 0;
    std::int32_t nbGradientEntries = 0;
    std::int32_t nbDefinedVariables = 0;

    [[nodiscard]] std::int32_t nbNonlinear() const noexcept {
        return nbNonlinearInRows > nbNonlinearInObjectives ? nbNonlinearInRows
                                                           : nbNonlinearInObjectives;
    }
    /// Does the place of variable j make it integer? @param j  from 0 to nbVariables - 1.
    [[nodiscard]] bool isInteger(std::int32_t j) const noexcept;
};

/// Reads the header and sets the input's form to what it says. Checks that the counts fit together
/// and that the file has room for them.
NlHeader readNlHeader(NlInput& input);

}  // namespace norv
