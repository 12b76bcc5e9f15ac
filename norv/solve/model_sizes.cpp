#include "solve/model_sizes.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "hostapi/codes.hpp"
#include "solve/number_text.hpp"

namespace norv {
namespace {

constexpr double farApart = 1e9;

void countRow(ModelSizes& sizes, const Model& model, std::int32_t i) {
    namespace type = hostapi::equation_type;
    switch (model.rowType(i)) {
        case type::equality:
            ++sizes.rows.equations;
            break;
        case type::free:
            ++sizes.rows.free;
            break;
        case type::logic:
            ++sizes.rows.logical;
            break;
        default:
            ++sizes.rows.inequalities;
    }
    if (model.hasInstructions(i)) {
        ++sizes.rows.nonlinear;
    } else if (!model.quadraticPart(i).empty()) {
        ++sizes.rows.quadratic;
    }
    Magnitudes own;
    for (const LinearPart& each : model.linearPart(i)) {
        own.add(each.coefficient);
        sizes.coefficients.add(each.coefficient);
    }
    sizes.rightHandSides.add(model.rightHandSide(i));
    if (own.ratio() <= sizes.worstRatio) return;
    sizes.worstRatio = own.ratio();
    sizes.worstScaledRow = model.rowName(i);
}

void countColumn(ModelSizes& sizes, const Model& model, std::int32_t j) {
    namespace type = hostapi::variable_type;
    switch (model.variableType(j)) {
        case type::binary:
            ++sizes.columns.binary;
            break;
        case type::integer:
            ++sizes.columns.integer;
            break;
        case type::semiContinuous:
        case type::semiInteger:
            ++sizes.columns.semiContinuous;
            break;
        default:
            ++sizes.columns.continuous;
    }
    sizes.bounds.add(model.lower(j));
    sizes.bounds.add(model.upper(j));
}

/// "3 equations, 2 inequalities"
class Listing {
public:
    void add(std::int32_t count, const char* what) {
        if (count == 0) return;
        text_ += (text_.empty() ? "" : ", ") + std::to_string(count) + ' ' + what;
    }
    void add(const Magnitudes& magnitudes, const char* what) {
        if (magnitudes.largest == 0.0) return;
        text_ += (text_.empty() ? "" : ", ") + std::string(what) + ' ' +
                 numberText(magnitudes.smallest, 3);
        if (magnitudes.largest > magnitudes.smallest)
            text_ += " to " + numberText(magnitudes.largest, 3);
    }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

}  // namespace

void Magnitudes::add(double value) {
    const double size = std::fabs(value);
    if (size == 0.0 || std::isinf(size)) return;
    smallest = smallest == 0.0 ? size : std::min(smallest, size);
    largest = std::max(largest, size);
}

ModelSizes sizesOf(const Model& model) {
    ModelSizes sizes;
    for (std::int32_t i = 0; i < model.nbRows(); ++i) countRow(sizes, model, i);
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) countColumn(sizes, model, j);
    for (const LinearPart& each : model.linearPart(-1)) sizes.objective.add(each.coefficient);
    return sizes;
}

void printSizes(std::ostream& out, const ModelSizes& sizes) {
    Listing kinds;
    kinds.add(sizes.rows.equations, "equations");
    kinds.add(sizes.rows.inequalities, "inequalities");
    kinds.add(sizes.rows.logical, "logical rows");
    kinds.add(sizes.rows.free, "free rows");
    kinds.add(sizes.rows.quadratic, "quadratic");
    kinds.add(sizes.rows.nonlinear, "nonlinear");
    kinds.add(sizes.columns.continuous, "continuous columns");
    kinds.add(sizes.columns.binary, "binary");
    kinds.add(sizes.columns.integer, "integer");
    kinds.add(sizes.columns.semiContinuous, "semi-continuous");
    if (!kinds.text().empty()) out << "  " << kinds.text() << '\n';
    Listing magnitudes;
    magnitudes.add(sizes.coefficients, "coefficients");
    magnitudes.add(sizes.objective, "objective");
    magnitudes.add(sizes.rightHandSides, "right-hand sides");
    magnitudes.add(sizes.bounds, "bounds");
    if (!magnitudes.text().empty()) out << "  " << magnitudes.text() << '\n';
    if (sizes.worstRatio > farApart)
        out << "Warning: the coefficients of row " << sizes.worstScaledRow << " lie "
            << numberText(sizes.worstRatio, 2)
            << " apart; the small ones are lost in the tolerances.\n";
}

}  // namespace norv
