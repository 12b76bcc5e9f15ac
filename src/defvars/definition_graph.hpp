#pragma once

#include <cstdint>
#include <vector>

#include "defvars/defined_variables.hpp"
#include "defvars/jacobian_walk.hpp"
#include "defvars/order_list.hpp"

namespace vex {

/// Which variable is defined by which row, and whether one more definition would close a cycle.
///
/// A defined variable depends on every variable of its row. The defined variables stand in a list
/// in which each one is in front of all those that it depends on, as in Pearce and Kelly, "A
/// dynamic topological sort algorithm for directed acyclic graphs" (JEA 11, 2006): a search for a
/// cycle then stays between the first variable of the new row and the last one that depends on the
/// new variable. Other than there, the search goes forward and backward in turn, entry by entry,
/// and ends when one of the two is done, as in Haeupler, Kavitha, Mathew, Sen and Tarjan,
/// "Incremental cycle detection, topological ordering, and strong component maintenance" (ACM
/// Transactions on Algorithms 8, 2012, section 3); and only that side's variables move, which a
/// list allows and numbers handed round do not.
///
/// Definitions given at the start may be circular among themselves. There is no order then, and
/// searches are not narrowed.
class DefinitionGraph {
public:
    /// @param known  is taken as it is.
    DefinitionGraph(ModelHandle nmo, const DefinedVariables& known);

    [[nodiscard]] bool isDefined(std::int32_t variable) const {
        return definingRow[index(variable)] != none;
    }
    /// Row that defines `variable`; -1 when it is not defined.
    [[nodiscard]] std::int32_t rowDefining(std::int32_t variable) const {
        return definingRow[index(variable)];
    }
    /// Variable that `row` defines; -1 when it defines none.
    [[nodiscard]] std::int32_t variableDefinedBy(std::int32_t row) const {
        return definedVariable[index(row)];
    }

    /// From now on `wouldCreateCycle` and `define` are about `row`, which defines nothing yet.
    /// Every defined variable of the row must be added next.
    void startRow(std::int32_t row);
    void addDefinedVariable(std::int32_t variable);

    /// Would defining `variable`, which is not defined, by the row make it depend on itself?
    bool wouldCreateCycle(std::int32_t variable);
    /// Defines `variable` by the row. The last call was `wouldCreateCycle` for it.
    void define(std::int32_t variable);

private:
    static constexpr std::int32_t none = -1;
    static std::size_t index(std::int32_t v) { return static_cast<std::size_t>(v); }

    /// The variables that the row depends on, as far as they were needed; serves all its tests.
    struct ForwardSearch {
        std::vector<std::int32_t> open;      ///< heap, the first of the list on top
        std::vector<std::int32_t> expanded;  ///< their rows are walked, or being walked
        RowWalk walk;
    };
    /// The variables that depend on the one in question.
    struct BackwardSearch {
        std::vector<std::int32_t> found;
        std::size_t nbExpanded = 0;  ///< of `found`
        ColumnWalk walk;
        bool isInFirstColumn = false;       ///< `lastDependent` is not final yet
        std::int32_t lastDependent = none;  ///< last in the list of those that use it directly
    };
    enum class Side { neither, forward, backward };

    [[nodiscard]] bool isReached(std::int32_t v) const {
        return reachedIn[index(v)] == nbRowsStarted;
    }
    [[nodiscard]] bool isDependent(std::int32_t u) const {
        return dependentIn[index(u)] == nbSearches;
    }
    void addKnown(const DefinedVariables& known);
    void open(std::int32_t u);
    [[nodiscard]] bool forwardIsDone();
    [[nodiscard]] bool backwardIsDone();
    bool stepForward();
    bool stepBackward();
    bool searchesMeet();
    void place(std::int32_t variable);

    ModelHandle nmo;
    std::vector<std::int32_t> definingRow;      ///< [nbVariables] or none
    std::vector<std::int32_t> definedVariable;  ///< [nbRows] or none
    OrderList order;                            ///< the defined variables, if `isOrdered`
    bool isOrdered = true;

    std::int32_t currentRow = none;
    std::int32_t firstUsed = none;  ///< first in the list of the row's defined variables
    ForwardSearch forward;
    BackwardSearch backward;
    Side doneSide = Side::neither;  ///< the one that ended the last test, if there was a search
    std::vector<std::uint32_t> reachedIn;    ///< [nbVariables] row that the variable was met for
    std::vector<std::uint32_t> dependentIn;  ///< [nbVariables] search that the variable was met in
    std::uint32_t nbRowsStarted = 0;
    std::uint32_t nbSearches = 0;
};

}  // namespace vex
