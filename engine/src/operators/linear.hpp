#pragma once

#include "operators/operands.hpp"

namespace engine {

/// Receives the terms of an expression that is linear in others, and knows what they are.
class LinearTerms {
public:
    [[nodiscard]] virtual bool isConstant(ExpressionIndex e) const = 0;
    /// Of constants.
    [[nodiscard]] virtual double numberOf(ExpressionIndex e) const = 0;
    /// Discrete and within 0 and 1.
    [[nodiscard]] virtual bool isBinary(ExpressionIndex e) const = 0;

    virtual void addConstant(double constant) = 0;
    virtual void addTerm(ExpressionIndex e, double factor) = 0;
    /// `factor` times the product of `factors`.
    /// @return false: such a product is no linear term; nothing was added.
    virtual bool addProduct(std::span<const ExpressionIndex> factors, double factor) = 0;

protected:
    ~LinearTerms() = default;
};

}  // namespace engine
