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
    Landmarks(const Definitions& allDefinitions, std::int32_t variableCount)
        : definitions(allDefinitions), nbVariables(static_cast<std::size_t>(variableCount)) {}

    [[nodiscard]] bool areAllPlaced() const { return nbPlaced == 64; }
    /// Makes a defined variable a landmark. Not when all are placed.
    void place(std::int32_t variable);
    /// Takes notice that `variable` was defined and its row's variables are or depend on
    /// `usedByRow`.
    void learn(std::int32_t variable, Set usedByRow);

    /// Landmarks that `variable` is or depends on.
    [[nodiscard]] Set usedBy(std::int32_t variable) const { return of(used, variable); }
    /// Landmarks that are `variable` or depend on it.
    [[nodiscard]] Set usersOf(std::int32_t variable) const { return of(users, variable); }

private:
    [[nodiscard]] static Set of(const std::vector<Set>& sets, std::int32_t variable) {
        return sets.empty() ? 0 : sets[static_cast<std::size_t>(variable)];
    }
    void add(std::vector<Set>& sets, std::int32_t variable, Set found);
    void tellUsers();
    void tellUsed();

    const Definitions& definitions;
    std::size_t nbVariables;
    int nbPlaced = 0;
    std::vector<Set> used;              ///< [nbVariables], empty before the first landmark
    std::vector<Set> users;             ///< [nbVariables], empty before the first landmark
    std::vector<std::int32_t> learned;  ///< stack: those whose neighbours are to be told
};

}  // namespace vex
