#pragma once

#include <cstdint>
#include <string>

#include "environment/environment_record.hpp"
#include "hostapi/handles.hpp"
#include "model/array.hpp"
#include "model/instance.hpp"

namespace norv {

/// How the link wants to see the instance: index base, row order, objective style.
struct LinkView {
    std::int32_t indexBase = 1;
    std::int32_t objectiveStyle = hostapi::objective_style::function;
    std::int32_t reformulatesObjective = 0;
    /// [nbRows] position in the link's order to row, free rows last; empty: the instance's order.
    Array<std::int32_t> rowAt;
    Array<std::int32_t> positionOf;  ///< the inverse, empty likewise
    std::int32_t nbRowsHidden = 0;   ///< free rows at the end of the order
};

/// What the link reports back.
struct SolutionRecord {
    static constexpr std::int32_t nbStatistics = 16;

    Array<double> levels;                                     ///< [nbVariables]
    Array<double> headAndTail = Array<double>(nbStatistics);  ///< by index
    std::int32_t modelStatus = 0;
    std::int32_t solveStatus = 0;
};

}  // namespace norv

namespace hostapi {

/// What a model handle points to.
struct ModelRecord {
    norv::Instance instance;
    norv::LinkView view;
    norv::SolutionRecord solution;
    EnvironmentRecord* environment = nullptr;  ///< borrowed; outlives the model
    std::string optionFile;                    ///< at most 255 characters
    std::int32_t optionFileNumber = 0;         ///< 0: none is to be read

    [[nodiscard]] std::int32_t nbVisibleRows() const noexcept {
        return instance.nbRows() - view.nbRowsHidden;
    }
    /// The link's index as the instance's. @throws std::out_of_range
    [[nodiscard]] std::int32_t variableAt(std::int32_t index) const;
    /// The same for rows, of which hidden ones have no index. @throws std::out_of_range
    [[nodiscard]] std::int32_t rowAt(std::int32_t index) const;
    /// The instance's row as the link's index; hidden rows lie beyond the range.
    [[nodiscard]] std::int32_t indexOfRow(std::int32_t row) const noexcept;
    /// Moves the free rows behind the others; again: nothing.
    void hideFreeRows();
};

void reportFailure(const ModelRecord* model, const char* operation, const char* reason) noexcept;

}  // namespace hostapi
