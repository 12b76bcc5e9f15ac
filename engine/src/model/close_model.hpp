#pragma once

#include <vector>

#include "model/closed_model.hpp"
#include "model/expression_store.hpp"

namespace engine {

/// Checks the graph and freezes it into flat arrays.
///
/// Refused (as a Refusal that names the expression): too few operands, a cycle, the scalar product
/// of arrays of different lengths. The store is only read. O(expressions + operands), without
/// recursion.
ClosedModel closeModel(const ExpressionStore& store,
                       const std::vector<ExpressionIndex>& constraints,
                       const std::vector<Objective>& objectives);

}  // namespace engine
