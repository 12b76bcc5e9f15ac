#pragma once

#include <memory>
#include <vector>

#include "model/closed_model.hpp"
#include "model/expression_store.hpp"
#include "model/name_table.hpp"

namespace engine {

/// The model of a solver: an expression store until it is closed, a ClosedModel afterwards.
///
/// Reading works the same in both states. Building requires an open model (the caller checks it)
/// and refuses, as a Refusal, what the operators do not allow. Not thread-safe while open.
class Model {
public:
    explicit Model(StoreLimits limits = {});

    [[nodiscard]] bool isClosed() const { return closed_ != nullptr; }
    /// Only when closed; lives as long as this.
    [[nodiscard]] const ClosedModel& closed() const { return *closed_; }
    /// The same for who may outlive this.
    [[nodiscard]] const std::shared_ptr<const ClosedModel>& sharedClosed() const { return closed_; }

    // Building, only while open.
    ExpressionIndex createExpression(ls_operator op) { return store_->createExpression(op); }
    ExpressionIndex createConstant(Value value) { return store_->createConstant(value); }
    void addOperand(ExpressionIndex e, ExpressionIndex operand) { store_->addOperand(e, operand); }
    void addConstraint(ExpressionIndex e);
    void addObjective(Objective objective);
    /// Freezes the model and frees the store; refused for an ill-formed one, which stays open.
    void close();

    // Reading, in both states. Indices are in range.
    [[nodiscard]] std::int32_t nbExpressions() const;
    [[nodiscard]] std::int64_t nbOperands() const;
    [[nodiscard]] ls_operator operatorOf(ExpressionIndex e) const;
    [[nodiscard]] std::int32_t nbOperandsOf(ExpressionIndex e) const;
    [[nodiscard]] ExpressionIndex operandOf(ExpressionIndex e, std::int32_t position) const;
    [[nodiscard]] Value constantOf(ExpressionIndex e) const;
    /// Static type; while open, only of constants and decisions.
    [[nodiscard]] bool isDouble(ExpressionIndex e) const;
    [[nodiscard]] const std::vector<ExpressionIndex>& constraints() const;
    [[nodiscard]] const std::vector<Objective>& objectives() const;

    NameTable names;

private:
    std::unique_ptr<ExpressionStore> store_;  ///< while open
    std::shared_ptr<const ClosedModel> closed_;
    std::vector<ExpressionIndex> constraints_;  ///< while open, like objectives_
    std::vector<Objective> objectives_;
};

}  // namespace engine
