#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "norv/model.hpp"

namespace norv {

/// Smallest and largest magnitude of some numbers, 0 left out; both 0 without any.
struct Magnitudes {
    double smallest = 0.0;
    double largest = 0.0;

    void add(double value);
    [[nodiscard]] double ratio() const { return smallest > 0.0 ? largest / smallest : 1.0; }
};

/// How large a model is, by kind.
struct ModelSizes {
    struct {
        std::int32_t equations = 0;
        std::int32_t inequalities = 0;
        std::int32_t free = 0;
        std::int32_t logical = 0;
        std::int32_t quadratic = 0;  ///< of all of them
        std::int32_t nonlinear = 0;  ///< of all of them
    } rows;
    struct {
        std::int32_t continuous = 0;
        std::int32_t binary = 0;
        std::int32_t integer = 0;
        std::int32_t semiContinuous = 0;  ///< semi-integer ones too
    } columns;
    Magnitudes coefficients;  ///< of the rows, linear
    Magnitudes objective;     ///< linear coefficients
    Magnitudes rightHandSides;
    Magnitudes bounds;
    std::string worstScaledRow;  ///< the row whose own coefficients lie furthest apart
    double worstRatio = 1.0;
};

/// O(rows + columns + coefficients).
[[nodiscard]] ModelSizes sizesOf(const Model& model);

/// Two lines about kinds and magnitudes, and a warning when numbers lie so far apart that the
/// tolerances, relative 1e-6, no longer tell the small ones from 0.
void printSizes(std::ostream& out, const ModelSizes& sizes);

}  // namespace norv
