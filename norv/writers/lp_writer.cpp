#include <cmath>
#include <string>
#include <vector>

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"
#include "writers/model_writer.hpp"
#include "writers/written_names.hpp"

namespace norv {
namespace {

namespace variable_type = hostapi::variable_type;
namespace equation_type = hostapi::equation_type;

/// Words with blanks in between, in lines that every reader takes.
class WrappedLine {
public:
    explicit WrappedLine(std::ostream& target) : out_(target) {}
    void add(const std::string& word) {
        constexpr std::size_t longest = 200;
        if (length_ + word.size() > longest) {
            out_ << "\n ";
            length_ = 0;
        }
        out_ << ' ' << word;
        length_ += word.size() + 1;
    }

private:
    std::ostream& out_;
    std::size_t length_ = 0;
};

class LpWriter {
public:
    LpWriter(std::ostream& target, const Model& source)
        : out_(target), model_(source), names_(source, "+-*^/<>=:\\[]|&", false) {}

    void write() {
        if (!names_.remark().empty()) out_ << "\\ " << names_.remark() << '\n';
        const bool minimises = model_.sense() == hostapi::objective_sense::minimise;
        out_ << (minimises ? "Minimize" : "Maximize") << "\n " << names_.objective() << ':';
        writeFunction(objectiveRow, model_.objectiveConstant());
        out_ << "\nSubject To\n";
        for (std::int32_t i = 0; i < model_.nbRows(); ++i) writeRow(i);
        writeBounds();
        writeList("General", &LpWriter::isGeneral);
        writeList("Binary", &LpWriter::isBinary);
        writeList("Semi-Continuous", &LpWriter::isSemi);
        writeSets();
        out_ << "End\n";
    }

private:
    using Choice = bool (LpWriter::*)(std::int32_t) const;

    [[nodiscard]] std::string term(double coefficient, const std::string& rest) const {
        const std::string sign = std::signbit(coefficient) ? "- " : "+ ";
        const double size = std::fabs(coefficient);
        if (rest.empty()) return sign + writtenNumber(size);
        return size == 1.0 ? sign + rest : sign + writtenNumber(size) + ' ' + rest;
    }
    [[nodiscard]] std::string product(const QuadraticPart& part, double factor) const {
        const std::string& first = names_.variable(part.first);
        const std::string rest = part.first == part.second
                                     ? first + " ^ 2"
                                     : first + " * " + names_.variable(part.second);
        return term(factor * part.coefficient, rest);
    }

    void writeFunction(std::int32_t row, double constant) {
        WrappedLine line(out_);
        const auto linear = model_.linearPart(row);
        const auto quadratic = model_.quadraticPart(row);
        for (const LinearPart& each : linear)
            line.add(term(each.coefficient, names_.variable(each.variable)));
        if (linear.empty() && model_.nbVariables() > 0) line.add("0 " + names_.variable(0));
        if (!quadratic.empty()) {
            const double factor = row == objectiveRow ? 2.0 : 1.0;
            line.add("+ [");
            for (const QuadraticPart& each : quadratic) line.add(product(each, factor));
            line.add(row == objectiveRow ? "] / 2" : "]");
        }
        if (constant != 0.0) line.add(term(constant, ""));
    }

    void writeRow(std::int32_t i) {
        const std::int32_t type = model_.rowType(i);
        if (type == equation_type::free) return;
        out_ << ' ' << names_.row(i) << ':';
        writeFunction(i, 0.0);
        const char* const sense = type == equation_type::less      ? "<="
                                  : type == equation_type::greater ? ">="
                                                                   : "=";
        out_ << ' ' << sense << ' ' << writtenNumber(model_.rightHandSide(i)) << '\n';
    }

    void writeBounds() {
        out_ << "Bounds\n";
        for (std::int32_t j = 0; j < model_.nbVariables(); ++j) {
            const double lower = model_.lower(j);
            const double upper = model_.upper(j);
            if (isBinary(j) || (lower == 0.0 && std::isinf(upper) && upper > 0.0)) continue;
            const std::string& name = names_.variable(j);
            if (lower == upper) {
                out_ << ' ' << name << " = " << writtenNumber(lower) << '\n';
            } else if (std::isinf(lower) && std::isinf(upper) && lower < upper) {
                out_ << ' ' << name << " free\n";
            } else {
                out_ << ' ' << bound(lower) << " <= " << name << " <= " << bound(upper) << '\n';
            }
        }
    }
    static std::string bound(double value) {
        if (!std::isinf(value)) return writtenNumber(value);
        return value < 0.0 ? "-inf" : "+inf";
    }

    [[nodiscard]] bool isBinary(std::int32_t j) const {
        return model_.variableType(j) == variable_type::binary && model_.lower(j) == 0.0 &&
               model_.upper(j) == 1.0;
    }
    [[nodiscard]] bool isGeneral(std::int32_t j) const {
        const std::int32_t type = model_.variableType(j);
        return type == variable_type::integer || type == variable_type::semiInteger ||
               (type == variable_type::binary && !isBinary(j));
    }
    [[nodiscard]] bool isSemi(std::int32_t j) const {
        const std::int32_t type = model_.variableType(j);
        return type == variable_type::semiContinuous || type == variable_type::semiInteger;
    }
    void writeList(const char* heading, Choice isListed) {
        bool isEmpty = true;
        for (std::int32_t j = 0; j < model_.nbVariables(); ++j) {
            if (!(this->*isListed)(j)) continue;
            if (isEmpty) out_ << heading << '\n';
            isEmpty = false;
            out_ << ' ' << names_.variable(j) << '\n';
        }
    }

    void writeSets() {
        const auto sets = model_.specialOrderedSets();
        if (!sets.empty()) out_ << "SOS\n";
        for (std::size_t k = 0; k < sets.size(); ++k) {
            out_ << " s" << k + 1 << ": S" << sets[k].nbNonzeros() << "::";
            WrappedLine line(out_);
            for (std::size_t i = 0; i < sets[k].members.size(); ++i)
                line.add(names_.variable(sets[k].members[i]) + ':' + std::to_string(i + 1));
            out_ << '\n';
        }
    }

    std::ostream& out_;
    const Model& model_;
    WrittenNames names_;
};

}  // namespace

void writeLp(std::ostream& out, const Model& model) {
    requireQuadratic(model);
    LpWriter(out, model).write();
}

}  // namespace norv
