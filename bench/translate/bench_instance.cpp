#include "bench_instance.hpp"

#include <algorithm>
#include <string>

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"

namespace bench {

namespace {

constexpr std::int32_t termsPerRow = 10;

/// Distinct variables within a row, scattered over the rows.
std::int32_t variableOf(std::int32_t row, std::int32_t k, std::int32_t nbVariables) {
    const auto start = static_cast<std::int64_t>(row) * 7919;
    return static_cast<std::int32_t>((start + static_cast<std::int64_t>(k) * 97) % nbVariables);
}

}  // namespace

norv::Model makeInstance(Terms terms, std::int32_t nbTerms, bool withNames,
                         const norv::Environment& environment) {
    norv::ModelBuilder builder;
    builder.setWithNames(withNames);
    const std::int32_t nbVariables = std::max(nbTerms / 10, termsPerRow);
    for (std::int32_t j = 0; j < nbVariables; ++j)
        builder.addVariable(hostapi::variable_type::continuous, 0.0, 10.0);
    builder.addCoefficient(norv::objectiveRow, 0, 2.0);
    for (std::int32_t i = 0; i < nbTerms / termsPerRow; ++i) {
        const std::int32_t row = builder.addRow(hostapi::equation_type::less, 100.5);
        for (std::int32_t k = 0; k < termsPerRow; ++k) {
            const std::int32_t j = variableOf(i, k, nbVariables);
            const double coefficient = 1.5 + k;
            if (terms == Terms::linear)
                builder.addCoefficient(row, j, coefficient);
            else
                builder.addQuadratic(row, j, variableOf(i, k + 1, nbVariables), coefficient);
        }
    }
    return builder.finish(environment);
}

}  // namespace bench
