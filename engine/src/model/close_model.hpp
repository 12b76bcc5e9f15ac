#pragma once

#include <vector>

#include "model/closed_model.hpp"
#include "model/expression_store.hpp"

namespace engine {

// Freezing a graph into flat arrays, in two steps: between them the store may go, so that a model
// of millions of terms is never held twice. Neither recurses; both are O(expressions + operands).

/// Operators, operands and constants alone.
/// Refused (as a Refusal that names the expression): too few operands, the scalar product of arrays
/// of different lengths.
ClosedModel copyGraph(const ExpressionStore& store);

/// All that follows from them. Refused: a cycle.
void completeModel(ClosedModel& model, const std::vector<ExpressionIndex>& constraints,
                   const std::vector<Objective>& objectives);

/// The way back, into an empty store; no more memory than copyGraph() needed beside the store.
void refill(ExpressionStore& store, ClosedModel graph);

}  // namespace engine
