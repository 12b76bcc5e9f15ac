#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "norv/special_ordered_set.hpp"
#include "readers/nl_instance.hpp"

namespace norv {

/// The suffixes of variables that describe special ordered sets.
///
/// Users give `sosno`, for each set a number of its own, positive for type 1 and negative for type
/// 2, and `ref`, the weights. AMPL itself adds `sos` and `sosref` where it makes piecewise-linear
/// terms linear: sixteen times the number of a set, plus 1 for type 2. Variables in whose `sos` the
/// bit 2 is set belong to AMPL's own binary form of the sets and are no members.
class NlSpecialOrdered {
public:
    /// The values of the suffix [nbVariables], 0 at first; null when it tells nothing about sets.
    /// They stay valid until the next call.
    [[nodiscard]] std::vector<double>* valuesOf(std::string_view suffix, std::int32_t nbVariables);

    /// The sets in ascending order of their numbers, those of users first.
    /// @throws ReadError when weights do not tell an order that counts.
    [[nodiscard]] std::vector<SpecialOrderedSet> sets(const NlInstance& instance) const;

private:
    enum Suffix : std::uint8_t { sosno, ref, sos, sosref, nbSuffixes };
    static constexpr std::string_view names[nbSuffixes] = {"sosno", "ref", "sos", "sosref"};

    std::vector<double> values_[nbSuffixes];  ///< [nbVariables] each, or empty
};

}  // namespace norv
