#pragma once

#include <cctype>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "model/close_model.hpp"
#include "model/expression_store.hpp"
#include "model/operator_table.hpp"

namespace engine::testing {

/// Closed models from text: statements that end in ';'. "x: bool", "y: int 0 5" and
/// "z: real -1 1" make decisions, "t = sum(x, y)" names an expression, "minimise e" and "maximise
/// e" add objectives, any other expression is a constraint. Numbers with a point or exponent are
/// doubles.
class ModelText {
public:
    explicit ModelText(std::string_view text) : text_(text) {
        for (skip(); at_ < text_.size(); skip()) statement();
        model = closeModel(store_, constraints_, objectives_);
    }
    ClosedModel model;
    [[nodiscard]] ExpressionIndex named(const std::string& name) const { return names_.at(name); }

private:
    void skip() {
        while (at_ < text_.size() && (std::isspace(text_[at_]) != 0 || text_[at_] == ';')) ++at_;
    }
    bool accept(char c) {
        while (at_ < text_.size() && text_[at_] == ' ') ++at_;
        if (at_ >= text_.size() || text_[at_] != c) return false;
        ++at_;
        return true;
    }
    std::string word() {
        while (at_ < text_.size() && text_[at_] == ' ') ++at_;
        const std::size_t first = at_;
        while (at_ < text_.size() &&
               std::string_view(" \n,;:=()").find(text_[at_]) == std::string_view::npos) {
            ++at_;
        }
        if (at_ == first) throw std::invalid_argument("model text: a word is missing");
        return std::string(text_.substr(first, at_ - first));
    }
    void statement() {
        const std::string first = word();
        if (first == "minimise" || first == "maximise") {
            objectives_.push_back({expression(word()), first == "maximise"});
        } else if (accept(':')) {
            names_[first] = decision(word());
        } else if (accept('=')) {
            names_[first] = expression(word());
        } else {
            constraints_.push_back(expression(first));
        }
    }
    ExpressionIndex decision(const std::string& kind) {
        if (kind == "bool") return store_.createExpression(LS_OP_BOOL);
        const ExpressionIndex lower = number(word());
        const ExpressionIndex upper = number(word());
        const ExpressionIndex e = store_.createExpression(kind == "int" ? LS_OP_INT : LS_OP_FLOAT);
        store_.addOperand(e, lower);
        store_.addOperand(e, upper);
        return e;
    }
    ExpressionIndex number(const std::string& text) {
        const bool isDouble = text.find_first_of(".einfa") != std::string::npos;
        return store_.createConstant(isDouble
                                         ? Value::ofDouble(std::strtod(text.c_str(), nullptr))
                                         : Value::ofInt(std::strtoll(text.c_str(), nullptr, 10)));
    }
    ExpressionIndex expression(const std::string& first) {
        if (const auto known = names_.find(first); known != names_.end()) return known->second;
        if (!accept('(')) return number(first);
        std::vector<ExpressionIndex> operands;
        while (!accept(')')) {
            operands.push_back(expression(word()));
            accept(',');
        }
        const ExpressionIndex e = store_.createExpression(operatorNamed(first));
        for (const ExpressionIndex x : operands) store_.addOperand(e, x);
        return e;
    }
    static ls_operator operatorNamed(const std::string& name) {
        for (int op = LS_OP_BOOL; op <= LS_OP_INT; ++op) {
            if (operatorInfo(static_cast<ls_operator>(op)).name == name) {
                return static_cast<ls_operator>(op);
            }
        }
        throw std::invalid_argument("model text: no operator " + name);
    }

    std::string_view text_;
    std::size_t at_ = 0;
    ExpressionStore store_;
    std::map<std::string, ExpressionIndex> names_;
    std::vector<ExpressionIndex> constraints_;
    std::vector<Objective> objectives_;
};

}  // namespace engine::testing
