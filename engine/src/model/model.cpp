#include "model/model.hpp"

#include "model/close_model.hpp"
#include "model/refusal.hpp"

namespace engine {

namespace {

constexpr std::int32_t largestCount = std::numeric_limits<std::int32_t>::max();

template <class Entry>
bool isFull(const std::vector<Entry>& list) {
    return list.size() >= static_cast<std::size_t>(largestCount);
}

void checkScalar(ls_operator op, ExpressionIndex e) {
    if (op == LS_OP_ARRAY) {
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("expression %d is an array and can be neither constraint nor "
                                 "objective",
                                 e));
    }
}

}  // namespace

Model::Model(StoreLimits limits) : store_(std::make_unique<ExpressionStore>(limits)) {}

void Model::addConstraint(ExpressionIndex e) {
    checkScalar(operatorOf(e), e);
    if (isFull(constraints_)) {
        throw Refusal(LS_ERROR_LIMIT,
                      formatText("the model has %d constraints, the most it holds", largestCount));
    }
    constraints_.push_back(e);
}

void Model::addObjective(Objective objective) {
    checkScalar(operatorOf(objective.expression), objective.expression);
    if (isFull(objectives_)) {
        throw Refusal(LS_ERROR_LIMIT,
                      formatText("the model has %d objectives, the most it holds", largestCount));
    }
    objectives_.push_back(objective);
}

void Model::close() {
    auto closed = std::make_shared<ClosedModel>(copyGraph(*store_));
    store_ = std::make_unique<ExpressionStore>(store_->limits());
    try {
        completeModel(*closed, constraints_, objectives_);
    } catch (...) {
        refill(*store_, std::move(*closed));
        throw;
    }
    store_.reset();
    closed_ = std::move(closed);
    constraints_ = {};
    objectives_ = {};
}

std::int32_t Model::nbExpressions() const {
    return closed_ ? closed_->nbExpressions() : store_->nbExpressions();
}

std::int64_t Model::nbOperands() const {
    return closed_ ? static_cast<std::int64_t>(closed_->operand.size()) : store_->nbOperands();
}

ls_operator Model::operatorOf(ExpressionIndex e) const {
    return closed_ ? closed_->operatorOf(e) : store_->operatorOf(e);
}

std::int32_t Model::nbOperandsOf(ExpressionIndex e) const {
    return closed_ ? static_cast<std::int32_t>(closed_->operandsOf(e).size())
                   : store_->nbOperandsOf(e);
}

ExpressionIndex Model::operandOf(ExpressionIndex e, std::int32_t position) const {
    return closed_ ? closed_->operandsOf(e)[static_cast<std::size_t>(position)]
                   : store_->operandOf(e, position);
}

Value Model::constantOf(ExpressionIndex e) const {
    return closed_ ? closed_->constantValue[static_cast<std::size_t>(e)] : store_->constantOf(e);
}

bool Model::isDouble(ExpressionIndex e) const {
    if (closed_) return closed_->isDouble[static_cast<std::size_t>(e)] != 0;
    return operatorOf(e) == LS_OP_CONST ? !constantOf(e).isInt() : operatorOf(e) == LS_OP_FLOAT;
}

const std::vector<ExpressionIndex>& Model::constraints() const {
    return closed_ ? closed_->constraint : constraints_;
}

const std::vector<Objective>& Model::objectives() const {
    return closed_ ? closed_->objective : objectives_;
}

}  // namespace engine
