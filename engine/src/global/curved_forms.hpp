#pragma once

#include <vector>

#include "global/factorable_model.hpp"

namespace engine {

/// The expressions whose tangent planes tell more than the lines of their parts: those that are
/// convex or concave, without sums whose terms tell as much, and without curves of one linear
/// argument.
///
/// @param values    [nbExpressions] at any point: gives the values of constant expressions.
/// @param form      [nbExpressions] over the columns of `factorable`, of those needed.
/// @param isNeeded  [nbExpressions]
std::vector<CurvedForm> curvedFormsOf(const ClosedModel& model, const Propagator& propagator,
                                      const std::vector<Value>& values,
                                      const FactorableModel& factorable,
                                      const std::vector<LinearForm>& form,
                                      const std::vector<std::uint8_t>& isNeeded);

}  // namespace engine
