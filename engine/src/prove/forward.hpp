#pragma once

#include "model/closed_model.hpp"
#include "prove/range_store.hpp"

namespace engine {

/// All values that operator expression `e` can take when its operands stay in their ranges, by
/// natural interval extension (Moore 1966), contained in the judge's own rounding.
///
/// @param e       neither a decision nor a constant.
/// @param ranges  of the operands at least. O(operands of e); a lookup or scalar product: O(its
/// array).
Range imageOf(const ClosedModel& model, ExpressionIndex e, const RangeStore& ranges);

/// A relation between two integer expressions whose values are surely exact.
bool isExactRelation(const ClosedModel& model, ExpressionIndex relation, const RangeStore& ranges);

}  // namespace engine
