#pragma once

#include <cstdint>

#include "norv/export.hpp"
#include "norv/model.hpp"
#include "norv/model_builder.hpp"

namespace norv {

/// What took the place of a model's special ordered sets.
struct SetReformulation {
    std::int32_t nbBinaries = 0;
    std::int32_t nbRows = 0;
};

/// Replaces the special ordered sets of an instance by binary variables and linear rows, so that
/// the link, which refuses sets, can solve it. The variables of the instance keep their indices;
/// the binaries come after them and start where the members' levels say.
///
/// Type 1 has a binary b for each member x between l and u: l b <= x <= u b, and at most one b is
/// 1. A member that is binary itself is its own b. Type 2 has a binary z for each pair of
/// neighbours, at most one z is 1, and the z of the pairs that a member is in take the place of b.
/// That is the model of G. B. Dantzig, "On the significance of solving linear programming problems
/// with some integer variables" (1960). Where a member has no bound of its own, or a wide one, the
/// linear rows are asked for one; in place of none it gets that one.
/// @param model    the finished instance with its sets.
/// @param builder  a copy of the builder that `model` was finished from; loses its sets.
/// @throws std::invalid_argument when a member has no bound, naming set, member and side.
[[nodiscard]] NORV_API SetReformulation reformulateSets(const Model& model, ModelBuilder& builder);

}  // namespace norv
