#include "norv/readers/mps_text.hpp"

#include <sstream>
#include <vector>

namespace norv::test {
namespace {

constexpr const char* kindNames[] = {"", " bin", " int", " semi", " semi int"};

/// [rows] the functions as sums, "" for an empty one.
std::vector<std::string> functionsOf(const MpsInstance& instance) {
    std::vector<std::string> functions(instance.rows.size());
    const auto append = [&](std::int32_t row, double coefficient, const std::string& factor) {
        std::ostringstream term;
        term << (coefficient < 0 ? " - " : " + ");
        const double size = coefficient < 0 ? -coefficient : coefficient;
        if (size != 1.0) term << size << ' ';
        functions[static_cast<std::size_t>(row)] += term.str() + factor;
    };
    for (std::size_t j = 0; j < instance.columns.size(); ++j) {
        for (std::size_t k = instance.columnStarts[j]; k < instance.columnStarts[j + 1]; ++k) {
            append(instance.entries[k].row, instance.entries[k].value,
                   std::string(instance.columns[j].name));
        }
    }
    for (const MpsQuadraticTerm& term : instance.quadraticTerms) {
        std::string factors(instance.columns[static_cast<std::size_t>(term.first)].name);
        factors.append("*").append(instance.columns[static_cast<std::size_t>(term.second)].name);
        append(term.row, term.coefficient, factors);
    }
    return functions;
}

}  // namespace

std::string describe(const MpsInstance& instance) {
    const std::vector<std::string> functions = functionsOf(instance);
    std::ostringstream out;
    out << (instance.maximise ? "max " : "min ") << instance.objectiveConstant;
    if (instance.objective != MpsInstance::noRow) {
        out << functions[static_cast<std::size_t>(instance.objective)];
    }
    for (std::size_t i = 0; i < instance.rows.size(); ++i) {
        if (static_cast<std::int32_t>(i) == instance.objective) continue;
        const Sides sides = sidesOf(instance.rows[i]);
        out << " | " << instance.rows[i].name << ": " << sides.lower << " <=" << functions[i]
            << " <= " << sides.upper;
    }
    for (const MpsColumn& column : instance.columns) {
        out << " | " << column.lower << " <= " << column.name << " <= " << column.upper
            << kindNames[static_cast<std::size_t>(column.kind)];
    }
    for (const MpsSet& set : instance.sets) {
        out << " | " << set.name << ": sos" << set.type;
        for (const MpsSetMember& member : set.members)
            out << ' ' << instance.columns[static_cast<std::size_t>(member.column)].name;
    }
    return out.str();
}

std::string around(const std::string& sections) {
    return "NAME small\nROWS\n N cost\n L c1\n G c2\n E c3\nCOLUMNS\n x cost 1 c1 1\n y cost 1 c1 "
           "1\n" +
           sections + "ENDATA\n";
}

}  // namespace norv::test
