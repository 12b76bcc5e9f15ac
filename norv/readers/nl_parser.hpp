#pragma once

#include <string>
#include <vector>

#include "readers/coefficient_sums.hpp"
#include "readers/nl_expressions.hpp"
#include "readers/nl_input.hpp"
#include "readers/nl_instance.hpp"
#include "readers/nl_special_ordered.hpp"

namespace norv {

/// Reads one .nl file into an instance. Used once.
class NlParser {
public:
    /// Parameters as of `readNl`.
    NlParser(const InputText& file, NlNames names, std::int32_t objective,
             std::int32_t nbValueVariables);

    NlInstance parse();

private:
    void makeRoom();
    void readSegment(char kind);
    void readRowExpression();
    void readLogicalRow();
    void readObjective();
    void readFunction();
    void readSuffix();
    double readSuffixValue(bool isReal, bool hasUse);
    void readRowBounds();
    void readVariableBounds();
    void readStartingPoint(bool isPrimal);
    void readColumnCounts(bool areCumulative);
    void readRowEntries();
    void readGradient();
    LinearTerm readTerm(std::int32_t row);
    void readBounds(double& lower, double& upper, bool isRow);
    void checkCounts();

    NlInput input_;
    NlInstance instance_;
    NlExpressions expressions_;
    NlSpecialOrdered specialOrdered_;
    CoefficientSums coefficientSums_;         ///< of rows and, numbered from -1 down, objectives
    std::vector<std::int32_t> columnCounts_;  ///< [nbVariables] entries announced; or empty
    std::int32_t nbValueVariables_;           ///< of piecewise-linear terms
    bool hasRowBounds_ = false;
    bool hasVariableBounds_ = false;
};

}  // namespace norv
