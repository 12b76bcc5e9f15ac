#include "bench_instance.hpp"

#include <algorithm>
#include <vector>

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

/// Rows of ten blocks of ten instructions; from the second on each joins what came before.
void addLists(norv::ModelBuilder& builder, std::int32_t nbInstructions, std::int32_t nbVariables) {
    enum Code : std::int32_t { pushV = 1, pushI, add = 4, sub = 7, mulV = 11, mulI, mulIAdd = 24 };
    enum Call : std::int32_t { call1 = 20, call2, exp = 10, sin = 16, power = 21 };
    constexpr std::int32_t nbConstants = 8;
    for (std::int32_t k = 0; k < nbConstants; ++k) builder.addPoolConstant(1.5 + k);
    std::vector<std::int32_t> opcodes;
    std::vector<std::int32_t> fields;
    for (std::int32_t i = 0; i < nbInstructions / (10 * termsPerRow); ++i) {
        opcodes.clear();
        fields.clear();
        for (std::int32_t k = 0; k < termsPerRow; ++k) {
            const auto v = [&](std::int32_t n) {
                return variableOf(i, 4 * k + n, nbVariables) + 1;
            };
            const std::int32_t c = k % nbConstants + 1;
            const std::int32_t block[][2] = {
                {pushV, v(0)}, {mulV, v(1)},
                {pushV, v(2)}, {call1, k % 2 == 0 ? exp : sin},
                {mulIAdd, c},  {pushV, v(3)},
                {pushI, c},    {call2, power},
                {add, 0},      {k == 0 ? mulI : k == 5 ? sub : add, c}};
            for (const auto& [opcode, field] : block) {
                opcodes.push_back(opcode);
                fields.push_back(field);
            }
        }
        builder.setInstructions(builder.addRow(hostapi::equation_type::less, 100.5), opcodes,
                                fields);
    }
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
    if (terms == Terms::instructions) addLists(builder, nbTerms, nbVariables);
    for (std::int32_t i = 0; terms != Terms::instructions && i < nbTerms / termsPerRow; ++i) {
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
