#pragma once

#include <cstdint>
#include <vector>

#include "defvars/defined_variables.hpp"
#include "defvars/definitions.hpp"
#include "defvars/jacobian.hpp"
#include "defvars/landmarks.hpp"
#include "defvars/order_list.hpp"

namespace vex {

/// Which variable is defined by which row, and whether one more definition would close a cycle.
///
/// A defined variable depends on every variable of its row. The defined variables stand in a list
/// in which each one is in front of all those that it depends on, as in Pearce and Kelly, "A
/// dynamic topological sort algorithm for directed acyclic graphs" (JEA 11, 2006): a search for a
/// cycle then stays between the first variable of the new row and the last one that depends on the
/// new variable. There it goes forward from the front and backward from the end in turn, and ends
/// where the two pass each other, as in the compatible search of Haeupler, Kavitha, Mathew, Sen and
/// Tarjan, "Incremental cycle detection, topological ordering, and strong component maintenance"
/// (ACM Transactions on Algorithms 8, 2012, section 3): O(sqrt(m)) amortised steps for each of the
/// m entries of defining rows, and a few of them mostly. Deviations: the turns are single entries,
/// so that neither a long row nor a long column delays the end; and the candidates of one row share
/// the forward search.
///
/// Definitions given at the start may be circular among themselves. There is no order then, and
/// searches are not narrowed.
class DefinitionGraph {
public:
    /// @param source  outlives this object; with the rows of `known`.
    /// @param known       is taken as it is.
    DefinitionGraph(const Jacobian& source, const DefinedVariables& known);
    DefinitionGraph(const DefinitionGraph&) = delete;
    DefinitionGraph& operator=(const DefinitionGraph&) = delete;

    [[nodiscard]] const Definitions& all() const { return definitions_; }

    /// From now on `wouldCreateCycle` and `define` are about `row`, which defines nothing yet.
    void startRow(std::int32_t row);

    /// Would defining `variable`, which is not defined, by the row make it depend on itself?
    bool wouldCreateCycle(std::int32_t variable);
    /// Defines `variable` by the row. The last call was `wouldCreateCycle` for it.
    void define(std::int32_t variable);

private:
    static constexpr std::int32_t none = Definitions::none;
    static std::size_t index(std::int32_t k) { return static_cast<std::size_t>(k); }

    /// Definitions that were met, most of them not yet looked into. A search looks into the one
    /// that is first (last, for the backward search) in the list before all others.
    struct Search {
        std::vector<std::int32_t> open;      ///< heap
        std::vector<std::int32_t> expanded;  ///< in their order, that of `rest` included
        Jacobian::Entries rest;              ///< of the one that was last looked into
        [[nodiscard]] bool isExhausted() const { return rest.empty() && open.empty(); }
        std::int32_t takeEntry() {
            const std::int32_t entry = rest.front().index;
            rest = rest.subspan(1);
            return entry;
        }
    };

    /// When a definition was met last.
    struct Visit {
        std::uint32_t reachedFor = 0;   ///< number of the row, by the forward search
        std::uint32_t dependentIn = 0;  ///< number of the test, by the backward search
    };

    /// Orders the heaps: whether `b` is to be looked into before `a`.
    [[nodiscard]] auto laterForward() const {
        return [this](std::int32_t a, std::int32_t b) { return order_.isBefore(b, a); };
    }
    [[nodiscard]] auto laterBackward() const {
        return [this](std::int32_t a, std::int32_t b) { return order_.isBefore(a, b); };
    }

    void use(std::int32_t d);
    void reach(std::int32_t d);
    bool searchesMeet();
    void learnFromMeeting(std::int64_t nbSteps);
    [[nodiscard]] bool searchesHavePassed() const;
    bool stepForward();
    bool stepBackward();
    void place(std::int32_t d);
    void placeBehindDependents(std::int32_t d);
    void placeBetweenSearches(std::int32_t d);
    [[nodiscard]] bool isInPlace(std::int32_t d) const;
    [[nodiscard]] bool areInPlace(const std::vector<std::int32_t>& moved) const;

    const Jacobian& jacobian_;
    Definitions definitions_;
    OrderList order_;        ///< the definitions, if `isOrdered`
    bool isOrdered_ = true;  ///< without an order, no definition is in front of another
    Landmarks landmarks_;
    std::int64_t nbFutileSteps_ = 0;  ///< of searches that met, since the last landmark was placed

    std::int32_t currentRow_ = none;
    std::int32_t firstUsed_ = none;      ///< first in the list of the definitions that the row uses
    Landmarks::Set usedLandmarks_ = 0;   ///< of the definitions that the row uses
    std::int32_t inQuestion_ = none;     ///< variable of the test
    std::int32_t meetingPoint_ = none;   ///< definition where the searches met last
    Search forward_;                     ///< from the row's variables; serves all tests of a row
    Search backward_;                    ///< from the variable in question, through its dependents
    bool isInFirstColumn_ = false;       ///< `lastDependent` is not final yet
    std::int32_t lastDependent_ = none;  ///< last in the list of those that use it directly
    std::vector<Visit> visits_;          ///< [nbRows], by definition
    std::vector<std::uint32_t> reachedFor_;  ///< [nbVariables], of those that are not defined
    std::uint32_t nbRowsStarted_ = 0;
    std::uint32_t nbSearches_ = 0;
};

}  // namespace vex
