#pragma once

#include <cstdint>
#include <type_traits>

#include "hostapi/codes.hpp"
#include "hostapi/handles.hpp"
#include "interface/guarded.hpp"
#include "interface/text_result.hpp"
#include "model/model_record.hpp"
#include "norv/export.hpp"

/// Declarations of the model object's operations, for the files that define them.
///
/// A definition checks what the link passes: a null object or an index out of range is reported to
/// the log and answered by a value that means nothing (-1, not-a-number, an empty text). Null
/// places for results are skipped.

#define NORV_DECLARE_OPERATIONS
#include "interface/declare_operations.hpp"
// The table comes last: it uses the macro.
#include "hostapi/nmo_operations.inc"

namespace norv {

constexpr double noValue = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t noIndex = -1;

/// Stores a result where the caller wants one.
template <class Value>
void deliver(Value* place, Value value) noexcept {
    if (place != nullptr) *place = value;
}

/// The parts of `row` (the objective's number for the objective) as the link fetches them.
void deliverStatistics(const Instance& instance, std::int32_t row, std::int32_t* nbEntries,
                       std::int32_t* nbQuadratic, std::int32_t* nbNonlinear) noexcept;
void deliverSparse(const hostapi::ModelRecord& model, std::int32_t row, std::int32_t* variables,
                   double* values, std::int32_t* nonlinear, std::int32_t* nbEntries,
                   std::int32_t* nbNonlinear) noexcept;
/// A diagonal entry is delivered as twice the coefficient of the square: the second derivative.
void deliverQuadratic(const hostapi::ModelRecord& model, std::int32_t row, std::int32_t* first,
                      std::int32_t* second, double* values) noexcept;
void deliverInstructions(const Instance& instance, std::int32_t row, std::int32_t* nbInstructions,
                         std::int32_t* opcodes, std::int32_t* fields) noexcept;

}  // namespace norv
