#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "nonlinear/expression.hpp"
#include "norv/piecewise_linear.hpp"
#include "readers/nl_header.hpp"
#include "readers/nl_input.hpp"
#include "readers/nl_operators.hpp"

namespace norv {

/// Reads the expressions of an .nl file, which stand in prefix order, into a store.
///
/// Iterative: the depth of an expression is limited by memory alone. What the host has no word for
/// becomes a foreign node, so that it matters only where it is used.
class NlExpressions {
public:
    /// @param source, target  outlive this object.
    NlExpressions(NlInput& source, ExpressionStore& target) : input_(source), store_(target) {}

    void setCounts(const NlHeader& header);

    /// Reads one expression. @return its node.
    NodeIndex read();
    /// Reads a segment "V": an expression with linear terms, under a number of its own.
    void readDefinedVariable();
    /// Reads a segment "F": the name of an imported function.
    void readImportedFunction();

    /// The piecewise-linear terms read so far. They are variables behind the file's own as far as
    /// the store has such, and else functions of their arguments.
    [[nodiscard]] const std::vector<PiecewiseLinear>& piecewise() const { return piecewise_; }

    /// Throws for the first foreign thing in `root`. @param user  the row or objective, for the
    /// message.
    void refuseForeign(NodeIndex root, const std::string& user) const;

private:
    /// An operation that waits for operands.
    struct Pending {
        std::int32_t op;  ///< or functionCall
        std::int32_t nbOperands;
        std::size_t firstOperand;  ///< in `operands`
        std::size_t place;         ///< in the file
    };
    static constexpr std::int32_t functionCall = -1;

    /// What a foreign node stands for.
    struct Foreign {
        std::string what;
        std::size_t place;
    };

    void readItem();
    void beginOperation(std::size_t place);
    void beginFunctionCall(std::size_t place);
    void readString(std::size_t place);
    NodeIndex reference();
    void finishOperations();
    NodeIndex makePiecewise(std::span<const NodeIndex> operands);
    NodeIndex makeForeign(std::string what, std::size_t place);

    NlInput& input_;
    ExpressionStore& store_;
    std::int32_t nbVariables_ = 0;
    std::vector<NodeIndex> definedVariables_;  ///< or noNode, not defined yet
    std::vector<std::string> functions_;       ///< or empty, not declared yet
    std::vector<Pending> pending_;
    std::vector<NodeIndex> operands_;
    std::vector<Foreign> foreign_;
    std::vector<PiecewiseLinear> piecewise_;
};

}  // namespace norv
