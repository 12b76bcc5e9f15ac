#include <algorithm>
#include <tuple>

#include "readers/mps_parser.hpp"
#include "readers/number_text.hpp"

namespace norv {
namespace {

bool isNumber(std::string_view field) {
    return parseNumber(field).fault == NumberFault::none;
}

}  // namespace

void MpsParser::parseSpecialOrdered(const MpsFields& fields) {
    // A column may be called S1: " S1 3" in a set is a member with its weight.
    const bool isMember = openSet_.isOpen && fields.count() == 2 && isNumber(fields[1]) &&
                          columnNames_.find(fields[0]) != NameIndex::absent;
    if ((fields[0] == "S1" || fields[0] == "S2") && !isMember) return openSet(fields);
    if (fields.count() != 2 && fields.count() != 3) {
        failCount(fields, "2 or 3: set (or none), column and weight");
    }
    if (section_ == MpsSection::specialOrdered && !openSet_.isOpen) {
        fail(fields[0], "found " + quoted(fields[0]) + ", expected S1 or S2 and the name of a set");
    }
    continueSet(fields.count() == 3 ? fields[0] : std::string_view());
    const std::string_view column = fields[fields.count() - 2];
    const std::string_view weight = fields[fields.count() - 1];
    instance_.sets.back().members.push_back({columnOf(column), numberOf(weight), placeOf(column)});
}

/// "S1 name", "S1 name priority", "S1 label name", "S1 label name priority".
void MpsParser::openSet(const MpsFields& fields) {
    if (fields.count() < 2 || fields.count() > 4) {
        failCount(fields, "2 to 4: S1 or S2, name of the set, priority (or none)");
    }
    const bool hasLabel = fields.count() == 4 ||
                          (fields.count() == 3 && (fields[1] == "SOS" || !isNumber(fields[2])));
    const std::string_view name = fields[hasLabel ? 2 : 1];
    checkName(name);
    openSet_ = {true, true, hasLabel ? fields[1] : std::string_view("SOS")};
    instance_.sets.push_back({name, fields[0] == "S1" ? 1 : 2, {}});
}

/// Sees to it that the last set is the one that `label`, empty without one, stands for.
void MpsParser::continueSet(std::string_view label) {
    const bool isSame = openSet_.isOpen && (label.empty() || label == openSet_.label ||
                                            label == instance_.sets.back().name);
    if (isSame) return;
    if (openSet_.hasHeader) {
        fail(label, "found " + quoted(label) + " in front of a member, expected the open set, " +
                        quoted(instance_.sets.back().name));
    }
    const bool isOne = section_ == MpsSection::specialOrdered1;
    const std::string_view name = !label.empty() ? label : isOne ? "SOS1" : "SOS2";
    if (!labelledSets_.insert(name).second) {
        fail(
            label.empty() ? lines_.line() : label,
            "found set " + quoted(name) + " again after other sets, expected its members together");
    }
    openSet_ = {true, false, name};
    instance_.sets.push_back({name, isOne ? 1 : 2, {}});
}

void MpsParser::finishSpecialOrdered() {
    for (MpsSet& set : instance_.sets) checkMembers(set);
}

void MpsParser::checkMembers(MpsSet& set) const {
    auto& members = set.members;
    const auto complain = [&](const MpsSetMember& member, const std::string& remark) {
        throw ReadError(complaint(text_.path(), member.place,
                                  "found " + quoted(columnNames_[member.column]) + remark));
    };
    const std::string here = " in set " + quoted(set.name) + ", expected ";
    const auto byColumn = [](const MpsSetMember& a, const MpsSetMember& b) {
        return a.column < b.column;
    };
    std::stable_sort(members.begin(), members.end(), byColumn);
    for (std::size_t k = 1; k < members.size(); ++k) {
        if (members[k].column == members[k - 1].column)
            complain(members[k], " for the second time" + here + "each member once");
    }
    std::stable_sort(members.begin(), members.end(), [](const auto& a, const auto& b) {
        return std::tie(a.weight, a.place.line) < std::tie(b.weight, b.place.line);
    });
    // Without neighbours the order is nobody's business.
    for (std::size_t k = 1; k < members.size() && set.type == 2 && members.size() > 2; ++k) {
        if (members[k].weight == members[k - 1].weight)
            complain(members[k], " with the weight of " +
                                     quoted(columnNames_[members[k - 1].column]) + here +
                                     "weights that tell the order");
    }
}

}  // namespace norv
