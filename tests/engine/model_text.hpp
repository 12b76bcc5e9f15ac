#pragma once

#include <cctype>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/close_model.hpp"
#include "model/expression_store.hpp"
#include "model/operator_table.hpp"

namespace engine::testing {

/// A number as the texts have it: with a point, an exponent or a name a double, else an integer.
inline Value numberOf(const std::string& text) {
    if (text == "nan") return Value::ofDouble(std::numeric_limits<double>::quiet_NaN());
    const bool isDouble = text.find_first_of(".einfa") != std::string::npos;
    return isDouble ? Value::ofDouble(std::strtod(text.c_str(), nullptr))
                    : Value::ofInt(std::strtoll(text.c_str(), nullptr, 10));
}

/// Closed models from text: statements that end in ';'.
///
///     x, y: real 0 9;  n: int -5 5;  b: bool;      decisions with their bounds
///     t = 2*x + exp(y);                            a name for an expression
///     t - n <= 3.5;  or(b, x == 0);                constraints: any other expression
///     minimise x*x - 3*y;  maximise n;             objectives
///
/// Operators stand between their operands (+ - * / ^ < <= == != >= >, ^ binds most) or before them
/// by the names of the operator table, so sum(x, y) is x + y. A chain of + or * is one operator of
/// many operands; a sign before digits is part of the number.
class ModelText {
public:
    explicit ModelText(std::string_view text) : text_(text) {
        for (skip(); at_ < text_.size(); skip()) statement();
        model = copyGraph(store_);
        completeModel(model, constraints_, objectives_);
    }
    ClosedModel model;
    [[nodiscard]] ExpressionIndex named(const std::string& name) const { return names_.at(name); }

private:
    void skip() {
        while (at_ < text_.size() && (std::isspace(text_[at_]) != 0 || text_[at_] == ';')) ++at_;
    }
    bool accept(std::string_view token) {
        while (at_ < text_.size() && std::isspace(text_[at_]) != 0) ++at_;
        if (text_.substr(at_, token.size()) != token) return false;
        at_ += token.size();
        return true;
    }
    [[nodiscard]] bool isWordAt(std::size_t at) const {
        return at < text_.size() &&
               (std::isalnum(text_[at]) != 0 || text_[at] == '_' || text_[at] == '.');
    }
    /// A name, or a number with its sign and exponent.
    std::string word() {
        accept("");
        const std::size_t first = at_;
        if (accept("-")) accept("");
        const bool isNumber = at_ < text_.size() && std::isdigit(text_[at_]) != 0;
        while (isWordAt(at_)) {
            const bool isExponent = isNumber && text_[at_] == 'e';
            ++at_;
            if (isExponent && at_ < text_.size() && text_[at_] == '-') ++at_;
        }
        if (at_ == first) throw std::invalid_argument("no word at: " + rest());
        return std::string(text_.substr(first, at_ - first));
    }
    [[nodiscard]] std::string rest() const { return std::string(text_.substr(at_, 40)); }

    void statement() {
        const std::size_t start = at_;
        std::vector<std::string> first;
        do {
            accept("");
            first.push_back(isWordAt(at_) ? word() : "");
        } while (accept(","));
        if (first[0] == "minimise" || first[0] == "maximise") {
            objectives_.push_back({expression(), first[0] == "maximise"});
        } else if (accept(":")) {
            const std::size_t kind = at_;
            for (const std::string& name : first) {
                at_ = kind;
                names_[name] = decision(word());
            }
        } else if (text_.substr(at_, 2) != "==" && accept("=")) {
            names_[first[0]] = expression();
        } else {
            at_ = start;
            constraints_.push_back(expression());
        }
    }
    ExpressionIndex decision(const std::string& kind) {
        if (kind == "bool") return store_.createExpression(LS_OP_BOOL);
        const ExpressionIndex lower = store_.createConstant(numberOf(word()));
        const ExpressionIndex upper = store_.createConstant(numberOf(word()));
        return apply(kind == "int" ? LS_OP_INT : LS_OP_FLOAT, {lower, upper});
    }
    ExpressionIndex apply(ls_operator op, const std::vector<ExpressionIndex>& operands) {
        const ExpressionIndex e = store_.createExpression(op);
        for (const ExpressionIndex x : operands) store_.addOperand(e, x);
        return e;
    }

    ExpressionIndex expression() {
        static constexpr std::pair<std::string_view, ls_operator> relations[] = {
            {"<=", LS_OP_LEQ}, {">=", LS_OP_GEQ}, {"==", LS_OP_EQ},
            {"!=", LS_OP_NEQ}, {"<", LS_OP_LT},   {">", LS_OP_GT}};
        const ExpressionIndex left = sum();
        for (const auto& [token, op] : relations) {
            if (accept(token)) return apply(op, {left, sum()});
        }
        return left;
    }
    ExpressionIndex sum() {
        std::vector<ExpressionIndex> terms{product()};
        const auto total = [&] { return terms.size() == 1 ? terms[0] : apply(LS_OP_SUM, terms); };
        while (true) {
            if (accept("+")) {
                terms.push_back(product());
            } else if (accept("-")) {
                const ExpressionIndex left = total();
                terms = {apply(LS_OP_SUB, {left, product()})};
            } else {
                return total();
            }
        }
    }
    ExpressionIndex product() {
        std::vector<ExpressionIndex> factors{power()};
        const auto total = [&] {
            return factors.size() == 1 ? factors[0] : apply(LS_OP_PROD, factors);
        };
        while (true) {
            if (accept("*")) {
                factors.push_back(power());
            } else if (accept("/")) {
                const ExpressionIndex upper = total();
                factors = {apply(LS_OP_DIV, {upper, power()})};
            } else {
                return total();
            }
        }
    }
    ExpressionIndex power() {
        const ExpressionIndex base = primary();
        return accept("^") ? apply(LS_OP_POW, {base, primary()}) : base;
    }
    ExpressionIndex primary() {
        if (accept("(")) {
            const ExpressionIndex e = expression();
            if (!accept(")")) throw std::invalid_argument("no ) at: " + rest());
            return e;
        }
        const std::string name = word();
        if (const auto known = names_.find(name); known != names_.end()) return known->second;
        if (!accept("(")) return constant(name);
        std::vector<ExpressionIndex> operands;
        while (!accept(")")) {
            operands.push_back(expression());
            accept(",");
        }
        return apply(operatorNamed(name), operands);
    }
    ExpressionIndex constant(const std::string& name) {
        const std::string size = name.substr(name[0] == '-' ? 1 : 0);
        const bool isNumber = std::isdigit(size[0]) != 0 || size == "inf" || size == "nan";
        if (!isNumber) throw std::invalid_argument("neither a name nor a number: " + name);
        return store_.createConstant(numberOf(name));
    }
    static ls_operator operatorNamed(const std::string& name) {
        for (int op = LS_OP_BOOL; op <= LS_OP_INT; ++op) {
            if (operatorInfo(op).name == name) return static_cast<ls_operator>(op);
        }
        throw std::invalid_argument("no operator " + name);
    }

    std::string_view text_;
    std::size_t at_ = 0;
    ExpressionStore store_;
    std::map<std::string, ExpressionIndex> names_;
    std::vector<ExpressionIndex> constraints_;
    std::vector<Objective> objectives_;
};

/// Numbers as values of the model's decisions, integers for discrete ones.
inline Point pointOf(const ClosedModel& model, const std::vector<double>& numbers) {
    Point point;
    for (const double v : numbers) {
        const bool isDiscrete = model.isDiscrete(static_cast<DecisionIndex>(point.size()));
        point.push_back(isDiscrete ? Value::ofInt(static_cast<std::int64_t>(v))
                                   : Value::ofDouble(v));
    }
    return point;
}

}  // namespace engine::testing
