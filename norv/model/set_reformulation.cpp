#include "norv/set_reformulation.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <map>
#include <stdexcept>

#include "model/implied_bounds.hpp"
#include "model/model_record.hpp"

namespace norv {

namespace {

class Reformulator {
public:
    Reformulator(const Instance& source, std::span<const double> startingLevels,
                 ModelBuilder& target)
        : instance_(source),
          levels_(startingLevels),
          bounds_(impliedBounds(source)),
          builder_(target) {}

    SetReformulation run() {
        const std::int32_t nbVariables = builder_.nbVariables();
        const std::int32_t nbRows = builder_.nbRows();
        for (const SpecialOrderedSet& set : instance_.sets) {
            if (!set.restricts()) continue;
            bound(set);
            if (set.type == hostapi::variable_type::specialOrdered1) {
                allowOne(set);
            } else {
                allowNeighbours(set);
            }
        }
        return {builder_.nbVariables() - nbVariables, builder_.nbRows() - nbRows};
    }

private:
    static constexpr std::int32_t none = -1;

    /// Gives the members bounds, so that the link need not impose its own on them.
    void bound(const SpecialOrderedSet& set) {
        for (const std::int32_t member : set.members) {
            const double lower = bounds_.lower[member];
            const double upper = bounds_.upper[member];
            if (std::isinf(lower) || std::isinf(upper)) {
                throw std::invalid_argument(
                    "special ordered set \"" + set.name + "\": found no " +
                    (std::isinf(lower) ? "lower" : "upper") + " bound of member \"" +
                    nameOf(member) +
                    "\", expected one of its own or one that a linear row implies");
            }
            const double ownLower = instance_.variables.lower[member];
            const double ownUpper = instance_.variables.upper[member];
            builder_.setBounds(member, std::isinf(ownLower) ? lower : ownLower,
                               std::isinf(ownUpper) ? upper : ownUpper);
        }
    }

    void allowOne(const SpecialOrderedSet& set) {
        const std::int32_t atMostOne = addAtMostOne(set);
        for (const std::int32_t member : set.members) {
            if (isAlwaysZero(member)) continue;
            builder_.addCoefficient(atMostOne, indicatorOf(member), 1.0);
        }
    }

    void allowNeighbours(const SpecialOrderedSet& set) {
        const std::int32_t atMostOne = addAtMostOne(set);
        const std::size_t lastPair = set.members.size() - 2;
        const std::size_t startingPair = std::min(firstNonzero(set), lastPair);
        std::int32_t pairBefore = none;
        for (std::size_t k = 0; k < set.members.size(); ++k) {
            std::int32_t pairAfter = none;
            if (k <= lastPair) {
                pairAfter = addBinary(k == startingPair, set.name + ":" + nameOf(set.members[k]));
                builder_.addCoefficient(atMostOne, pairAfter, 1.0);
            }
            linkTo(set.members[k], {pairBefore, pairAfter}, set.name);
            pairBefore = pairAfter;
        }
    }

    /// The binary that is 1 where `member` is not 0, the same in every set.
    std::int32_t indicatorOf(std::int32_t member) {
        if (isZeroOrOne(member)) return member;
        const auto [found, isNew] = indicators_.try_emplace(member, none);
        if (isNew) {
            found->second = addBinary(isNonzero(member), nameOf(member) + ":nonzero");
            linkTo(member, {found->second}, nameOf(member));
        }
        return found->second;
    }

    /// lower * sum <= member <= upper * sum, for the sum of the binaries.
    void linkTo(std::int32_t member, std::initializer_list<std::int32_t> binaries,
                const std::string& prefix) {
        // With 0 on one side only, the other side holds already, or makes the sum 1.
        const auto link = [&](double bound, std::int32_t type, const char* ending) {
            const std::int32_t row =
                builder_.addRow(type, 0.0, shortened(prefix + ":" + nameOf(member) + ending));
            builder_.addCoefficient(row, member, 1.0);
            for (const std::int32_t each : binaries) {
                if (each != none) builder_.addCoefficient(row, each, -bound);
            }
        };
        if (bounds_.upper[member] > 0.0)
            link(bounds_.upper[member], hostapi::equation_type::less, ":upper");
        if (bounds_.lower[member] < 0.0)
            link(bounds_.lower[member], hostapi::equation_type::greater, ":lower");
    }

    std::int32_t addAtMostOne(const SpecialOrderedSet& set) {
        return builder_.addRow(hostapi::equation_type::less, 1.0, shortened(set.name + ":one"));
    }

    std::int32_t addBinary(bool startsAtOne, const std::string& name) {
        return builder_.addVariable(hostapi::variable_type::binary, 0.0, 1.0,
                                    startsAtOne ? 1.0 : 0.0, shortened(name));
    }

    /// The position of the first member that does not start at 0, or how many members there are.
    std::size_t firstNonzero(const SpecialOrderedSet& set) const {
        const auto found = std::find_if(set.members.begin(), set.members.end(),
                                        [this](std::int32_t each) { return isNonzero(each); });
        return static_cast<std::size_t>(found - set.members.begin());
    }

    bool isZeroOrOne(std::int32_t member) const {
        return instance_.variables.types[member] == hostapi::variable_type::binary &&
               bounds_.lower[member] >= 0.0 && bounds_.upper[member] <= 1.0;
    }
    bool isAlwaysZero(std::int32_t member) const {
        return bounds_.lower[member] == 0.0 && bounds_.upper[member] == 0.0;
    }
    bool isNonzero(std::int32_t member) const {
        return levels_[static_cast<std::size_t>(member)] != 0.0;
    }
    std::string nameOf(std::int32_t variable) const {
        return instance_.variableNames.nameOf(variable);
    }
    static std::string shortened(const std::string& name) {
        return name.substr(0, static_cast<std::size_t>(hostapi::longestText));
    }

    const Instance& instance_;
    std::span<const double> levels_;
    ImpliedBounds bounds_;
    ModelBuilder& builder_;
    std::map<std::int32_t, std::int32_t> indicators_;  ///< of members that are not binary
};

}  // namespace

SetReformulation reformulateSets(const Model& model, ModelBuilder& builder) {
    builder.removeSpecialOrderedSets();
    const Instance& instance = model.handle()->instance;
    return Reformulator(instance, model.levels(), builder).run();
}

}  // namespace norv
