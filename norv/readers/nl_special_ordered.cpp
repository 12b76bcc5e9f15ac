#include "readers/nl_special_ordered.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

#include "readers/read_error.hpp"

namespace norv {
namespace {

namespace variable_type = hostapi::variable_type;

std::string numberText(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// By number, so that the order does not depend on the order in the file.
using Sets = std::map<double, SpecialOrderedSet>;

Sets setsOfUser(const std::vector<double>& numbers) {
    Sets sets;
    for (std::size_t j = 0; j < numbers.size(); ++j) {
        if (numbers[j] == 0.0) continue;
        SpecialOrderedSet& set = sets[numbers[j]];
        set.type =
            numbers[j] > 0.0 ? variable_type::specialOrdered1 : variable_type::specialOrdered2;
        set.name = "sosno " + numberText(numbers[j]);
        set.members.push_back(static_cast<std::int32_t>(j));
    }
    return sets;
}

Sets setsOfAmpl(const std::vector<double>& codes) {
    constexpr std::int64_t isOfType2 = 1;
    constexpr std::int64_t isOfBinaryForm = 2;
    constexpr std::int64_t firstSet = 16;
    constexpr double beyondCodes = 0x1p31;
    Sets sets;
    for (std::size_t j = 0; j < codes.size(); ++j) {
        if (!(codes[j] >= firstSet && codes[j] < beyondCodes)) continue;
        const auto code = static_cast<std::int64_t>(codes[j]);
        if ((code & isOfBinaryForm) != 0) continue;
        const std::int64_t number = code / firstSet;
        SpecialOrderedSet& set = sets[static_cast<double>(number * 2 + (code & isOfType2))];
        set.type = (code & isOfType2) != 0 ? variable_type::specialOrdered2
                                           : variable_type::specialOrdered1;
        set.name = "sos " + std::to_string(number);
        set.members.push_back(static_cast<std::int32_t>(j));
    }
    return sets;
}

class Order {
public:
    Order(const NlInstance& file, const std::vector<double>& weightValues, const char* weightSuffix)
        : instance_(file), weights_(weightValues), suffix_(weightSuffix) {}

    void sort(SpecialOrderedSet& set) const {
        std::stable_sort(
            set.members.begin(), set.members.end(),
            [this](std::int32_t a, std::int32_t b) { return weightOf(a) < weightOf(b); });
        const bool ordersNeighbours = set.nbNonzeros() > 1 && set.restricts();
        for (std::size_t k = 1; k < set.members.size() && ordersNeighbours; ++k) {
            const std::int32_t before = set.members[k - 1];
            const std::int32_t member = set.members[k];
            if (weightOf(before) < weightOf(member)) continue;
            throw ReadError(instance_.path + ": special ordered set " + quoted(set.name) +
                            ": found weight " + numberText(weightOf(member)) + " for both " +
                            quoted(instance_.variableName(before)) + " and " +
                            quoted(instance_.variableName(member)) + ", expected suffix " +
                            suffix_ + " to tell their order");
        }
    }

private:
    [[nodiscard]] double weightOf(std::int32_t variable) const {
        return weights_.empty() ? 0.0 : weights_[static_cast<std::size_t>(variable)];
    }

    const NlInstance& instance_;
    const std::vector<double>& weights_;
    const char* suffix_;
};

}  // namespace

std::vector<double>* NlSpecialOrdered::valuesOf(std::string_view suffix, std::int32_t nbVariables) {
    const auto* const found = std::find(std::begin(names), std::end(names), suffix);
    if (found == std::end(names)) return nullptr;
    std::vector<double>& result = values_[found - std::begin(names)];
    result.resize(static_cast<std::size_t>(nbVariables));
    return &result;
}

std::vector<SpecialOrderedSet> NlSpecialOrdered::sets(const NlInstance& instance) const {
    std::vector<SpecialOrderedSet> result;
    const auto append = [&](Sets sets, const Order& order) {
        for (auto& [number, set] : sets) {
            order.sort(set);
            result.push_back(std::move(set));
        }
    };
    append(setsOfUser(values_[sosno]), Order(instance, values_[ref], "ref"));
    append(setsOfAmpl(values_[sos]), Order(instance, values_[sosref], "sosref"));
    return result;
}

}  // namespace norv
