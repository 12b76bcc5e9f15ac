#pragma once

#include <cstdint>
#include <vector>

#include "defvars/definitions.hpp"

namespace vex {

/// Defined variables of which is known at any time what depends on them and on what they depend.
///
/// Where many ways lead from many variables to many others, a few landmarks lie on most of them
/// and tell without a search that there is a way (the idea of Cohen, Halperin, Kaplan and Zwick,
/// "Reachability and distance queries via 2-hop labels", SIAM Journal on Computing 32, 2003). The
/// knowledge only grows with new definitions: O(entries) steps for each landmark in all.
class Landmarks {
public:
    /// A set of landmarks, one bit each.
    using Set = std::uint64_t;

    /// @param allDefinitions  outlive this object.
    Landmarks(const Definitions& allDefinitions, const Jacobian& jacobian)
        : definitions_(allDefinitions),
          nbVariables_(static_cast<std::size_t>(jacobian.nbVariables())),
          nbRows_(static_cast<std::size_t>(jacobian.nbRows())) {}

    [[nodiscard]] bool areAllPlaced() const { return nbPlaced_ == 64; }
    /// Makes the variable of definition `d` a landmark. Not when all are placed.
    void place(std::int32_t d);
    /// Takes notice of the new definition `d`, whose row's variables are or depend on `usedByRow`.
    void learn(std::int32_t d, Set usedByRow);

    /// Landmarks that the variable of definition `d` is or depends on.
    [[nodiscard]] Set usedBy(std::int32_t d) const { return of(used_, d); }
    /// Landmarks that are `variable` or depend on it.
    [[nodiscard]] Set usersOf(std::int32_t variable) const { return of(users_, variable); }

private:
    [[nodiscard]] static Set of(const std::vector<Set>& sets, std::int32_t k) {
        return sets.empty() ? 0 : sets[static_cast<std::size_t>(k)];
    }
    void add(std::vector<Set>& sets, std::int32_t k, Set found);
    void tellUsers();
    void tellUsed();

    const Definitions& definitions_;
    std::size_t nbVariables_;
    std::size_t nbRows_;
    int nbPlaced_ = 0;
    std::vector<Set> used_;   ///< [nbRows], by definition; empty before the first landmark
    std::vector<Set> users_;  ///< [nbVariables], empty before the first landmark
    /// Stack of definitions (of variables) whose users (whose used variables) are to be told.
    std::vector<std::int32_t> learned_;
};

}  // namespace vex
