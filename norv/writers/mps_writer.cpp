#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"
#include "writers/model_writer.hpp"
#include "writers/written_names.hpp"

namespace norv {
namespace {

namespace variable_type = hostapi::variable_type;
namespace equation_type = hostapi::equation_type;

class MpsWriter {
public:
    MpsWriter(std::ostream& target, const Model& source)
        : out_(target), model_(source), names_(source, "", true), columns_(entriesByColumn()) {}

    void write() {
        if (!names_.remark().empty()) out_ << "* " << names_.remark() << '\n';
        out_ << "NAME model FREE\n";  // some readers would guess
        if (model_.sense() == hostapi::objective_sense::maximise) out_ << "OBJSENSE\n    MAX\n";
        writeRows();
        writeColumns();
        writeRightHandSides();
        writeBounds();
        writeQuadraticParts();
        writeSets();
        out_ << "ENDATA\n";
    }

private:
    using Entry = std::pair<std::int32_t, double>;

    [[nodiscard]] std::vector<std::vector<Entry>> entriesByColumn() const {
        std::vector<std::vector<Entry>> columns(static_cast<std::size_t>(model_.nbVariables()));
        for (std::int32_t i = objectiveRow; i < model_.nbRows(); ++i) {
            for (const LinearPart& each : model_.linearPart(i))
                columns[static_cast<std::size_t>(each.variable)].emplace_back(i, each.coefficient);
        }
        return columns;
    }
    [[nodiscard]] std::string rowName(std::int32_t i) const {
        return i == objectiveRow ? names_.objective() : names_.row(i);
    }

    void writeRows() {
        out_ << "ROWS\n N " << names_.objective() << '\n';
        for (std::int32_t i = 0; i < model_.nbRows(); ++i) {
            const std::int32_t type = model_.rowType(i);
            const char letter = type == equation_type::less      ? 'L'
                                : type == equation_type::greater ? 'G'
                                : type == equation_type::free    ? 'N'
                                                                 : 'E';
            out_ << ' ' << letter << ' ' << names_.row(i) << '\n';
        }
    }

    [[nodiscard]] bool isInteger(std::int32_t j) const {
        const std::int32_t type = model_.variableType(j);
        return type == variable_type::integer || type == variable_type::binary;
    }

    void writeColumns() {
        out_ << "COLUMNS\n";
        bool isInMarkers = false;
        std::int32_t nbMarkers = 0;
        const auto mark = [&](bool opens) {
            out_ << " M" << ++nbMarkers << " 'MARKER' " << (opens ? "'INTORG'" : "'INTEND'")
                 << '\n';
            isInMarkers = opens;
        };
        for (std::int32_t j = 0; j < model_.nbVariables(); ++j) {
            if (isInteger(j) != isInMarkers) mark(isInteger(j));
            const auto& entries = columns_[static_cast<std::size_t>(j)];
            // A column that is nowhere else is there.
            if (entries.empty()) writeEntry(j, {objectiveRow, 0.0});
            for (const Entry& each : entries) writeEntry(j, each);
        }
        if (isInMarkers) mark(/*opens=*/false);
    }
    void writeEntry(std::int32_t j, const Entry& entry) {
        out_ << ' ' << names_.variable(j) << ' ' << rowName(entry.first) << ' '
             << writtenNumber(entry.second) << '\n';
    }

    void writeRightHandSides() {
        out_ << "RHS\n";
        const double constant = model_.objectiveConstant();
        if (constant != 0.0)
            out_ << " RHS " << names_.objective() << ' ' << writtenNumber(-constant) << '\n';
        for (std::int32_t i = 0; i < model_.nbRows(); ++i) {
            const double side = model_.rightHandSide(i);
            if (side != 0.0 && model_.rowType(i) != equation_type::free)
                out_ << " RHS " << names_.row(i) << ' ' << writtenNumber(side) << '\n';
        }
    }

    void writeBound(const char* type, std::int32_t j, const std::string& value = {}) {
        out_ << ' ' << type << " BND " << names_.variable(j) << (value.empty() ? "" : " ") << value
             << '\n';
    }
    void writeBounds() {
        out_ << "BOUNDS\n";
        for (std::int32_t j = 0; j < model_.nbVariables(); ++j) {
            const std::int32_t type = model_.variableType(j);
            const double lower = model_.lower(j);
            const double upper = model_.upper(j);
            const bool isSemi =
                type == variable_type::semiContinuous || type == variable_type::semiInteger;
            if (std::isinf(lower)) {
                writeBound("MI", j);
            } else if (lower != 0.0 || upper < 0.0) {
                writeBound("LO", j, writtenNumber(lower));
            }
            if (isSemi) {
                writeBound(type == variable_type::semiContinuous ? "SC" : "SI", j,
                           std::isinf(upper) ? "1e30" : writtenNumber(upper));
            } else if (!std::isinf(upper)) {
                writeBound("UP", j, writtenNumber(upper));
            } else if (isInteger(j)) {
                writeBound("PL", j);
            }
        }
    }

    /// The objective's matrix is halved by whoever reads it and given by its lower half; those of
    /// rows are whole.
    void writeQuadraticParts() {
        const auto objective = model_.quadraticPart(objectiveRow);
        if (!objective.empty()) out_ << "QUADOBJ\n";
        for (const QuadraticPart& each : objective)
            writeProduct(each.first, each.second,
                         each.first == each.second ? 2.0 * each.coefficient : each.coefficient);
        for (std::int32_t i = 0; i < model_.nbRows(); ++i) {
            const auto quadratic = model_.quadraticPart(i);
            if (!quadratic.empty()) out_ << "QCMATRIX " << names_.row(i) << '\n';
            for (const QuadraticPart& each : quadratic) {
                const bool isSquare = each.first == each.second;
                const double value = isSquare ? each.coefficient : each.coefficient / 2.0;
                writeProduct(each.first, each.second, value);
                if (!isSquare) writeProduct(each.second, each.first, value);
            }
        }
    }
    void writeProduct(std::int32_t first, std::int32_t second, double value) {
        out_ << ' ' << names_.variable(first) << ' ' << names_.variable(second) << ' '
             << writtenNumber(value) << '\n';
    }

    void writeSets() {
        const auto sets = model_.specialOrderedSets();
        if (!sets.empty()) out_ << "SOS\n";
        for (std::size_t k = 0; k < sets.size(); ++k) {
            out_ << " S" << sets[k].nbNonzeros() << " s" << k + 1 << '\n';
            for (std::size_t i = 0; i < sets[k].members.size(); ++i)
                out_ << ' ' << names_.variable(sets[k].members[i]) << ' ' << i + 1 << '\n';
        }
    }

    std::ostream& out_;
    const Model& model_;
    WrittenNames names_;
    std::vector<std::vector<Entry>> columns_;  ///< [nbVariables]
};

}  // namespace

void writeMps(std::ostream& out, const Model& model) {
    requireQuadratic(model);
    MpsWriter(out, model).write();
}

ModelWriter writerFor(const std::string& path) {
    if (path.ends_with(".lp")) return writeLp;
    return path.ends_with(".mps") ? writeMps : nullptr;
}

void requireQuadratic(const Model& model) {
    for (std::int32_t i = objectiveRow; i < model.nbRows(); ++i) {
        if (!model.hasInstructions(i)) continue;
        throw NotWritable((i == objectiveRow ? "the objective" : "row " + model.rowName(i)) +
                          " is neither linear nor quadratic");
    }
}

}  // namespace norv
