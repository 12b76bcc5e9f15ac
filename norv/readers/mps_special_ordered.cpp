#include "readers/mps_parser.hpp"

namespace norv {

void MpsParser::parseSpecialOrdered(const MpsFields& fields) {
    const bool opensSet = fields[0] == "S1" || fields[0] == "S2";
    if (opensSet) {
        if (fields.count() < 2 || fields.count() > 4) {
            failCount(fields, "2 to 4: S1 or S2, name of the set, priority (or none)");
        }
        specialOrderedKind_ =
            fields[0] == "S1" ? MpsColumnKind::specialOrdered1 : MpsColumnKind::specialOrdered2;
        return;
    }
    if (fields.count() != 2 && fields.count() != 3) {
        failCount(fields, "2 or 3: set (or none), column and weight");
    }
    if (specialOrderedKind_ == MpsColumnKind::continuous) {
        fail(fields[0], "found " + quoted(fields[0]) + ", expected S1 or S2 and the name of a set");
    }
    const std::size_t columnField = fields.count() - 2;
    const std::int32_t column = columnOf(fields[columnField]);
    numberOf(fields[columnField + 1]);
    instance_.columns[static_cast<std::size_t>(column)].kind = specialOrderedKind_;
}

}  // namespace norv
