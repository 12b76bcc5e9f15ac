#include "defvars/ignored_options.hpp"

#include <cstdint>

#include "host/operations.hpp"
#include "host/option_names.hpp"

namespace vex {

void reportIgnoredOptions(EnvironmentHandle nev, OptionHandle opt) {
    if (opt == nullptr) return;
    std::int32_t nbErrors = 0;
    const bool hasPairs = optVarEquMapCount(opt, variableEquationMap, &nbErrors) != 0;
    const bool wantsSearch = optGetIntStr(opt, option::aggrvars) != 0;
    if (!hasPairs && !wantsSearch) return;
    nevLogStat(nev,
               "Warning: Defined variables (options defvar, aggrvars) are not supported by this "
               "build, the model is solved without aggregation.");
}

}  // namespace vex
