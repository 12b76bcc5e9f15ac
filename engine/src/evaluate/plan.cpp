#include "evaluate/plan.hpp"

#include <algorithm>
#include <cmath>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

bool isLeaf(const ClosedModel& model, ExpressionIndex e) {
    return model.operatorOf(e) == LS_OP_CONST || model.decisionOf[static_cast<std::size_t>(e)] >= 0;
}

}  // namespace

Plan::Plan(const ClosedModel& model) : model_(model) {
    findLevels();
    findAbsorbed();
    findLogic();
    findScales();
    findLinks();
}

void Plan::findLevels() {
    const std::size_t n = model_.op.size();
    level_.assign(n, 0);
    sumIndex_.assign(n, -1);
    isFixed_.assign(n, 0);
    for (const ExpressionIndex e : model_.order) {
        if (isLeaf(model_, e)) {
            isFixed_[index(e)] = model_.operatorOf(e) == LS_OP_CONST;
            continue;
        }
        bool fixed = true;
        for (const ExpressionIndex x : model_.operandsOf(e)) {
            level_[index(e)] = std::max(level_[index(e)], level_[index(x)] + 1);
            fixed = fixed && isFixed(x);
        }
        isFixed_[index(e)] = fixed;
        nbLevels_ = std::max(nbLevels_, level_[index(e)]);
        if (model_.operatorOf(e) == LS_OP_SUM) sumIndex_[index(e)] = nbSums_++;
    }
    ++nbLevels_;
}

void Plan::findAbsorbed() {
    isAbsorbed_.assign(model_.op.size(), 0);
    std::vector<std::uint8_t> isWatched(model_.op.size(), 0);
    for (const ExpressionIndex e : model_.constraint) isWatched[index(e)] = 1;
    for (const Objective& o : model_.objective) isWatched[index(o.expression)] = 1;
    for (const ExpressionIndex e : model_.order) {
        if (model_.operatorOf(e) != LS_OP_PROD || isWatched[index(e)] != 0) continue;
        const auto operands = model_.operandsOf(e);
        const auto users = model_.usersOf(e);
        if (operands.size() != 2 || users.size() != 1) continue;
        if (model_.operatorOf(users[0]) != LS_OP_SUM) continue;
        const auto isConstant = [this](ExpressionIndex x) {
            return model_.operatorOf(x) == LS_OP_CONST;
        };
        isAbsorbed_[index(e)] = isConstant(operands[0]) != isConstant(operands[1]);
    }
}

void Plan::findLogic() {
    logicIndex_.assign(model_.op.size(), -1);
    entry_.assign(model_.op.size(), -1);
    std::vector<ExpressionIndex> open;
    const auto require = [&](ExpressionIndex e) {
        if (logicIndex_[index(e)] >= 0) return;
        logicIndex_[index(e)] = static_cast<std::int32_t>(logic_.size());
        logic_.push_back(e);
        if (isConnective(model_.operatorOf(e))) open.push_back(e);
    };
    for (const ExpressionIndex e : model_.constraint) {
        require(e);
        if (entry_[index(e)] >= 0) continue;
        entry_[index(e)] = static_cast<std::int32_t>(constraint_.size());
        constraint_.push_back(e);
    }
    while (!open.empty()) {
        const ExpressionIndex e = open.back();
        open.pop_back();
        for (const ExpressionIndex x : model_.operandsOf(e)) require(x);
    }
}

double Plan::sizeOfCoefficients(ExpressionIndex e) const {
    if (model_.operatorOf(e) != LS_OP_SUM) return isFixed(e) ? 0.0 : 1.0;
    double squares = 0.0;
    std::size_t nbTerms = 0;
    for (std::size_t k = 0; k < model_.operandsOf(e).size(); ++k) {
        const Term term = termOf(e, k);
        if (isFixed(term.expression)) continue;
        squares += term.factor.asDouble() * term.factor.asDouble();
        ++nbTerms;
    }
    return nbTerms == 0 ? 0.0 : std::sqrt(squares / static_cast<double>(nbTerms));
}

double Plan::scaleOfRelation(ExpressionIndex e) const {
    double size = 0.0;
    for (const ExpressionIndex side : model_.operandsOf(e)) {
        size = std::max(size, sizeOfCoefficients(side));
    }
    return size > 0.0 && std::isfinite(size) ? size : 1.0;
}

void Plan::findScales() {
    scale_.reserve(logic_.size());
    for (const ExpressionIndex e : logic_) {
        scale_.push_back(isRelation(model_.operatorOf(e)) ? scaleOfRelation(e) : 1.0);
    }
}

void Plan::addLinksOf(ExpressionIndex user, std::vector<std::size_t>& next) {
    const bool isSum = sumOf(user) >= 0;
    for (std::size_t k = 0; k < model_.operandsOf(user).size(); ++k) {
        const Term term =
            isSum ? termOf(user, k) : Term{model_.operandsOf(user)[k], Value::ofInt(1)};
        if (isFixed(term.expression)) continue;
        const std::size_t position = next[index(term.expression)]++;
        if (!link_.empty()) link_[position] = {user, isSum, term.factor};
    }
}

void Plan::findLinks() {
    // The same pass twice: first it counts, then it fills.
    const std::size_t n = model_.op.size();
    firstLink_.assign(n + 1, 0);
    std::vector<std::size_t> next(n, 0);
    const auto visitUsers = [&] {
        for (const ExpressionIndex e : model_.order) {
            if (!isLeaf(model_, e) && isAbsorbed_[index(e)] == 0) addLinksOf(e, next);
        }
    };
    visitUsers();
    for (std::size_t i = 0; i < n; ++i) firstLink_[i + 1] = firstLink_[i] + next[i];
    std::copy(firstLink_.begin(), firstLink_.end() - 1, next.begin());
    link_.resize(firstLink_[n]);
    if (!link_.empty()) visitUsers();
}

}  // namespace engine
