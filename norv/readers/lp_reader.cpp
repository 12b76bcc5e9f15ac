#include "readers/lp_reader.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <utility>

#include "hostapi/codes.hpp"
#include "readers/lp_lexer.hpp"
#include "readers/name_index.hpp"

namespace norv {
namespace {

using Kind = LpToken::Kind;

constexpr double infinity = std::numeric_limits<double>::infinity();

enum class Section { none, minimise, maximise, rows, bounds, general, binary, semi, sets, end };

struct SectionWord {
    std::string_view word;
    Section section;
};
constexpr SectionWord sectionWords[] = {
    {"minimize", Section::minimise}, {"minimise", Section::minimise},
    {"minimum", Section::minimise},  {"min", Section::minimise},
    {"maximize", Section::maximise}, {"maximise", Section::maximise},
    {"maximum", Section::maximise},  {"max", Section::maximise},
    {"st", Section::rows},           {"st.", Section::rows},
    {"s.t.", Section::rows},         {"bounds", Section::bounds},
    {"bound", Section::bounds},      {"general", Section::general},
    {"generals", Section::general},  {"gen", Section::general},
    {"integer", Section::general},   {"integers", Section::general},
    {"int", Section::general},       {"binary", Section::binary},
    {"binaries", Section::binary},   {"bin", Section::binary},
    {"semi", Section::semi},         {"semis", Section::semi},
    {"sos", Section::sets},          {"end", Section::end},
};

struct Term {
    std::int32_t variable;
    double coefficient;
    LpToken token;
};
struct Product {
    std::int32_t first;
    std::int32_t second;
    double coefficient;
};
/// One side of a relation.
struct Side {
    std::vector<Term> terms;
    std::vector<Product> products;
    double constant = 0.0;
    LpToken token;  ///< its first word

    [[nodiscard]] bool isConstant() const { return terms.empty() && products.empty(); }
};

struct Variable {
    double lower = 0.0;
    double upper = infinity;
    bool isInteger = false;
    bool isSemiContinuous = false;
    bool hasLower = false;
    LpToken bound;  ///< that set the upper bound last
};

class LpParser {
public:
    LpParser(const InputText& file, ModelBuilder& target) : lexer_(file), builder_(target) {}

    std::vector<std::string> parse() {
        const LpToken word = lexer_.current();
        const Section sense = takeSection();
        if (sense != Section::minimise && sense != Section::maximise)
            lexer_.refuse(word, "minimize or maximize");
        builder_.setSense(sense == Section::minimise ? hostapi::objective_sense::minimise
                                                     : hostapi::objective_sense::maximise);
        readObjective();
        Section section = Section::none;
        while (section != Section::end) {
            const LpToken head = lexer_.current();
            // Some writers leave the last word out.
            section = head.kind == Kind::end ? Section::end : takeSection();
            if (section == Section::none) lexer_.refuse(head, "the name of a section, or end");
            readSection(section);
        }
        if (lexer_.current().kind != Kind::end)
            lexer_.refuse(lexer_.current(), "nothing after the word end");
        finishVariables();
        return std::move(warnings_);
    }

private:
    // Sections

    /// A section's name stands at the start of a line, and no colon follows.
    [[nodiscard]] Section sectionHere() const {
        const LpToken& word = lexer_.current();
        if (word.kind != Kind::name || !word.startsLine || lexer_.next().isSymbol(":"))
            return Section::none;
        if (word.isWord("subject") && lexer_.next().isWord("to")) return Section::rows;
        if (word.isWord("such") && lexer_.next().isWord("that")) return Section::rows;
        const auto* const found = std::ranges::find_if(
            sectionWords, [&word](const SectionWord& each) { return word.isWord(each.word); });
        return found == std::end(sectionWords) ? Section::none : found->section;
    }

    Section takeSection() {
        const Section section = sectionHere();
        if (section == Section::none) return section;
        const bool isLong = lexer_.current().isWord("subject") || lexer_.current().isWord("such");
        const bool isSemi = lexer_.current().isWord("semi") && lexer_.next().text == "-";
        lexer_.advance();
        if (isLong) lexer_.advance();
        if (isSemi) {
            lexer_.advance();
            lexer_.advance();  // "continuous"
        }
        if (section == Section::rows && lexer_.current().isSymbol(":")) lexer_.advance();
        return section;
    }

    [[nodiscard]] bool atSectionEnd() const {
        return lexer_.current().kind == Kind::end || sectionHere() != Section::none;
    }

    void readSection(Section section) {
        while (!atSectionEnd()) {
            switch (section) {
                case Section::rows:
                    readRow();
                    break;
                case Section::bounds:
                    readBound();
                    break;
                case Section::general:
                    takeVariable().isInteger = true;
                    break;
                case Section::binary: {
                    Variable& variable = takeVariable();
                    variable.isInteger = true;
                    variable.lower = 0.0;
                    variable.upper = 1.0;
                    break;
                }
                case Section::semi:
                    takeVariable().isSemiContinuous = true;
                    break;
                case Section::sets:
                    readSet();
                    break;
                case Section::end:
                    return;
                default:
                    lexer_.refuse(lexer_.current(), "subject to, after the one objective");
            }
        }
    }

    // Names

    std::int32_t variableOf(const LpToken& name) {
        const auto [index, isNew] = names_.insert(name.text);
        if (isNew) {
            variables_.emplace_back();
            builder_.addVariable(hostapi::variable_type::continuous, 0.0, infinity, 0.0, name.text);
        }
        return index;
    }
    Variable& takeVariable() {
        const LpToken name = lexer_.current();
        if (name.kind != Kind::name) lexer_.refuse(name, "the name of a variable");
        lexer_.advance();
        return variables_[static_cast<std::size_t>(variableOf(name))];
    }
    /// "name :" in front of an objective, row or set; empty without one.
    std::string_view takeLabel() {
        if (!lexer_.next().isSymbol(":")) return {};
        const LpToken label = lexer_.current();
        if (label.kind != Kind::name && label.kind != Kind::number)
            lexer_.refuse(label, "a name in front of the colon");
        lexer_.advance();
        lexer_.advance();
        return label.text;
    }

    // Expressions

    double takeSigns() {
        double sign = 1.0;
        while (lexer_.current().kind == Kind::sign) {
            if (lexer_.current().text == "-") sign = -sign;
            lexer_.advance();
        }
        return sign;
    }
    [[nodiscard]] static bool isInfinite(const LpToken& token) {
        return token.isWord("inf") || token.isWord("infinity");
    }

    /// Signed terms up to a sense or whatever ends the expression.
    Side readSide(bool isObjective) {
        Side side;
        side.token = lexer_.current();
        do {
            readTerm(side, isObjective);
        } while (lexer_.current().kind == Kind::sign);
        return side;
    }
    /// Likewise. Behind a number a new line begins the next row: "x <= 4", "-2 <= y".
    Side readRightSide() {
        Side side;
        side.token = lexer_.current();
        do {
            readTerm(side, /*isObjective=*/false, /*isRight=*/true);
        } while (lexer_.current().kind == Kind::sign &&
                 !(side.isConstant() && lexer_.current().startsLine));
        return side;
    }

    void readTerm(Side& side, bool isObjective, bool isRight = false) {
        double coefficient = takeSigns();
        if (isInfinite(lexer_.current()) && !lexer_.next().isSymbol("*")) {
            side.constant += coefficient * infinity;
            return lexer_.advance();
        }
        bool isNumber = false;
        while (lexer_.current().kind == Kind::number &&
               !(isNumber && isRight && lexer_.current().startsLine)) {
            coefficient *= lexer_.current().value;
            isNumber = true;
            lexer_.advance();
            if (lexer_.current().isSymbol("*")) lexer_.advance();
        }
        if (isNumber && isRight && lexer_.current().startsLine) {
            side.constant += coefficient;
            return;
        }
        if (lexer_.current().isSymbol("[")) return readBrackets(side, coefficient, isObjective);
        const bool isVariable =
            lexer_.current().kind == Kind::name && !atSectionEnd() && !lexer_.next().isSymbol(":");
        if (!isVariable && !isNumber) lexer_.refuse(lexer_.current(), "a number, a variable or [");
        if (!isVariable) {
            side.constant += coefficient;
            return;
        }
        const LpToken name = lexer_.current();
        lexer_.advance();
        if (lexer_.current().isSymbol("^") || lexer_.current().isSymbol("*"))
            lexer_.refuse(lexer_.current(), "products in brackets only: [ x ^ 2 + x * y ]");
        side.terms.push_back({variableOf(name), coefficient, name});
    }

    /// "[ 2 x ^ 2 + 3 x * y ]", in the objective mostly with "/ 2" behind.
    void readBrackets(Side& side, double factor, bool isObjective) {
        lexer_.advance();
        const std::size_t first = side.products.size();
        while (!lexer_.current().isSymbol("]")) readProduct(side, factor);
        lexer_.advance();
        if (!lexer_.current().isSymbol("/")) return;
        if (!isObjective) lexer_.refuse(lexer_.current(), "no / behind brackets of a row");
        lexer_.advance();
        if (lexer_.current().kind != Kind::number || lexer_.current().value != 2.0)
            lexer_.refuse(lexer_.current(), "2");
        lexer_.advance();
        for (std::size_t k = first; k < side.products.size(); ++k)
            side.products[k].coefficient /= 2.0;
    }

    void readProduct(Side& side, double factor) {
        double coefficient = factor * takeSigns();
        if (lexer_.current().kind == Kind::number) {
            coefficient *= lexer_.current().value;
            lexer_.advance();
            if (lexer_.current().isSymbol("*")) lexer_.advance();
        }
        const auto takeName = [this] {
            const LpToken name = lexer_.current();
            if (name.kind != Kind::name) lexer_.refuse(name, "a variable");
            lexer_.advance();
            return variableOf(name);
        };
        const std::int32_t first = takeName();
        if (lexer_.current().isSymbol("*")) {
            lexer_.advance();
            side.products.push_back({first, takeName(), coefficient});
            return;
        }
        if (!lexer_.current().isSymbol("^"))
            lexer_.refuse(lexer_.current(), "^ 2 or * and a variable");
        lexer_.advance();
        if (lexer_.current().kind != Kind::number || lexer_.current().value != 2.0)
            lexer_.refuse(lexer_.current(), "the exponent 2");
        lexer_.advance();
        side.products.push_back({first, first, coefficient});
    }

    void add(std::int32_t row, const Side& side, double factor) {
        for (const Term& each : side.terms) {
            if (!std::isfinite(each.coefficient))
                lexer_.refuse(each.token, "a finite coefficient in front of it");
            builder_.addCoefficient(row, each.variable, factor * each.coefficient);
        }
        for (const Product& each : side.products) {
            if (!std::isfinite(each.coefficient))
                lexer_.refuse(side.token, "finite coefficients in the brackets");
            builder_.addQuadratic(row, each.first, each.second, factor * each.coefficient);
        }
    }

    void readObjective() {
        takeLabel();
        if (atSectionEnd()) return;
        const Side side = readSide(/*isObjective=*/true);
        if (!std::isfinite(side.constant)) lexer_.refuse(side.token, "a finite constant");
        add(objectiveRow, side, 1.0);
        builder_.setObjectiveConstant(side.constant);
    }

    // Rows and bounds

    /// -1 for <=, 0 for =, 1 for >=.
    int takeSense() {
        const LpToken token = lexer_.current();
        if (token.kind != Kind::sense) lexer_.refuse(token, "<=, = or >=");
        lexer_.advance();
        const bool isLess = token.text.find('<') != std::string_view::npos;
        const bool isGreater = token.text.find('>') != std::string_view::npos;
        if (isLess && isGreater) lexer_.refuse(token, "<=, = or >=");
        return isLess ? -1 : isGreater ? 1 : 0;
    }

    /// Narrows lower <= x <= upper by "x sense side".
    static void narrow(double& lower, double& upper, int sense, double side) {
        if (sense <= 0) upper = side;
        if (sense >= 0) lower = side;
    }

    void readRow() {
        const std::string_view label = takeLabel();
        Side first = readSide(/*isObjective=*/false);
        if (lexer_.current().isSymbol("->"))
            lexer_.refuse(lexer_.current(), "no rows that hold on a condition");
        int sense = takeSense();
        if (lexer_.current().isSymbol("->") || lexer_.next().isSymbol("->"))
            lexer_.refuse(lexer_.next(), "no rows that hold on a condition");
        Side second = readRightSide();
        double lower = -infinity;
        double upper = infinity;
        const bool isRange = lexer_.current().kind == Kind::sense;
        if (isRange) {
            if (!first.isConstant()) lexer_.refuse(first.token, "a number in front of a range");
            narrow(lower, upper, -sense, first.constant);
            std::swap(first, second);
            sense = takeSense();
            second = readRightSide();
            if (!second.isConstant()) lexer_.refuse(second.token, "a number behind a range");
        }
        if (first.isConstant()) {
            std::swap(first, second);
            sense = -sense;
        }
        narrow(lower, upper, sense, second.constant);
        if (std::isnan(first.constant) || std::isinf(first.constant))
            lexer_.refuse(first.token, "a finite constant beside the variables");
        const std::int32_t row =
            builder_.addRangeRow(lower - first.constant, upper - first.constant, label);
        add(row, first, 1.0);
        add(row, second, -1.0);
    }

    /// "x <= 4", "-1 <= x <= 4", "x >= -1", "x = 3", "x free", "4 >= x".
    void readBound() {
        if (lexer_.current().kind == Kind::name && lexer_.next().isWord("free")) {
            Variable& variable = takeVariable();
            lexer_.advance();
            variable.lower = -infinity;
            variable.upper = infinity;
            return;
        }
        const Side first = readSide(/*isObjective=*/false);
        int sense = takeSense();
        if (!first.isConstant()) {
            const Side bound = readRightSide();
            return setBound(first, sense, bound);
        }
        const Side middle = readSide(/*isObjective=*/false);
        setBound(middle, -sense, first);
        if (lexer_.current().kind != Kind::sense) return;
        sense = takeSense();
        setBound(middle, sense, readRightSide());
    }

    void setBound(const Side& side, int sense, const Side& bound) {
        const bool isVariable = side.terms.size() == 1 && side.products.empty() &&
                                side.constant == 0.0 && side.terms[0].coefficient == 1.0;
        if (!isVariable) lexer_.refuse(side.token, "one variable");
        if (!bound.isConstant() || std::isnan(bound.constant))
            lexer_.refuse(bound.token, "a number");
        Variable& variable = variables_[static_cast<std::size_t>(side.terms[0].variable)];
        narrow(variable.lower, variable.upper, sense, bound.constant);
        variable.hasLower = variable.hasLower || sense >= 0;
        if (sense < 0) variable.bound = bound.token;
    }

    /// "name: S1:: x:1 y:2 z:3"
    void readSet() {
        const LpToken head = lexer_.current();
        std::string_view name = takeLabel();
        const LpToken type = lexer_.current();
        const bool isOne = type.isWord("S1");
        if ((!isOne && !type.isWord("S2")) || !lexer_.next().isSymbol("::"))
            lexer_.refuse(type, "S1:: or S2::");
        lexer_.advance();
        lexer_.advance();
        if (name.empty()) name = type.text;
        std::vector<std::pair<double, std::int32_t>> members;
        while (lexer_.current().kind == Kind::name && lexer_.next().isSymbol(":") && !atNextSet()) {
            const std::int32_t variable = variableOf(lexer_.current());
            lexer_.advance();
            lexer_.advance();
            const double sign = takeSigns();
            if (lexer_.current().kind != Kind::number)
                lexer_.refuse(lexer_.current(), "the weight of a member");
            members.emplace_back(sign * lexer_.current().value, variable);
            lexer_.advance();
        }
        std::ranges::stable_sort(members, {}, &std::pair<double, std::int32_t>::first);
        SpecialOrderedSet set = {isOne ? hostapi::variable_type::specialOrdered1
                                       : hostapi::variable_type::specialOrdered2,
                                 std::string(name),
                                 {}};
        for (const auto& each : members) set.members.push_back(each.second);
        std::vector<std::int32_t> sorted = set.members;
        std::ranges::sort(sorted);
        if (std::ranges::adjacent_find(sorted) != sorted.end())
            lexer_.refuse(head, "a set without a member that is named twice");
        builder_.addSpecialOrderedSet(std::move(set));
    }
    /// "name: S1::" looks like a member up to its third word, which only a copy of the lexer sees.
    [[nodiscard]] bool atNextSet() const {
        LpLexer ahead = lexer_;
        ahead.advance();
        ahead.advance();
        return ahead.current().kind == Kind::name && ahead.next().isSymbol("::");
    }

    void finishVariables() {
        for (std::size_t k = 0; k < variables_.size(); ++k) {
            const Variable& variable = variables_[k];
            const auto j = static_cast<std::int32_t>(k);
            if (variable.upper < 0.0 && !variable.hasLower && variable.lower == 0.0) {
                warnings_.push_back(lexer_.place(
                    variable.bound, "the upper bound of " + quoted(names_[j]) +
                                        " is below 0, its lower bound; the lower bound stays"));
            }
            builder_.setBounds(j, variable.lower, variable.upper);
            builder_.setVariableType(j, typeOf(variable));
        }
    }
    static std::int32_t typeOf(const Variable& variable) {
        namespace type = hostapi::variable_type;
        if (variable.isSemiContinuous)
            return variable.isInteger ? type::semiInteger : type::semiContinuous;
        if (!variable.isInteger) return type::continuous;
        const bool isBinary = variable.lower >= 0.0 && variable.upper <= 1.0;
        return isBinary ? type::binary : type::integer;
    }

    LpLexer lexer_;
    ModelBuilder& builder_;
    NameIndex names_;
    std::vector<Variable> variables_;
    std::vector<std::string> warnings_;
};

}  // namespace

bool looksLikeLp(std::string_view content) {
    if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);
    while (!content.empty()) {
        const std::string_view line = content.substr(0, content.find('\n'));
        content.remove_prefix(std::min(line.size() + 1, content.size()));
        const std::size_t start = line.find_first_not_of(" \t\r");
        if (start == std::string_view::npos || line[start] == '\\') continue;
        LpToken word;
        word.kind = Kind::name;
        word.text = line.substr(start, line.find_first_of(" \t\r\\:", start) - start);
        const auto* const found = std::ranges::find_if(
            sectionWords, [&word](const SectionWord& each) { return word.isWord(each.word); });
        return found != std::end(sectionWords) &&
               (found->section == Section::minimise || found->section == Section::maximise);
    }
    return false;
}

std::vector<std::string> readLp(const InputText& file, ModelBuilder& builder) {
    return LpParser(file, builder).parse();
}

}  // namespace norv
