#include "nonlinear/evaluator.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "nonlinear/functions.hpp"
#include "nonlinear/instruction_code.hpp"

namespace norv {

namespace {

double combine(Action action, double left, double right) {
    switch (action) {
        case Action::add:
            return left + right;
        case Action::subtract:
            return left - right;
        case Action::multiply:
            return multiply(left, right);
        default:
            assert(action == Action::divide);
            return left / right;
    }
}

bool isClose(double x, double y, double tolerance) {
    const double largest = std::max({1.0, std::fabs(x), std::fabs(y)});
    return std::isfinite(largest) && std::fabs(x - y) <= tolerance * largest;
}

/// One list at one point.
class Run {
public:
    /// @param base  where the stack begins; it has room for what the list needs.
    /// @param lenient  null: relations are exact.
    Run(Quantity* base, std::span<const double> constants, std::span<const double> levels,
        Leniency* lenient)
        : next_(base), pool_(constants), point_(levels), leniency_(lenient) {}

    void step(std::int32_t opcode, std::int32_t field);
    [[nodiscard]] Quantity result() const { return next_[-1]; }

private:
    /// The operand of an instruction that may take it from the stack.
    Quantity takeOperand(Operand operand, std::int32_t field) {
        switch (operand) {
            case Operand::stack:
                return *--next_;
            case Operand::variable:
                return {point_[static_cast<std::size_t>(field - 1)], 0};
            case Operand::constant:
                return {constantAt(field), 0};
            case Operand::zero:
                break;
        }
        return {};
    }

    [[nodiscard]] double constantAt(std::int32_t field) const {
        return pool_[static_cast<std::size_t>(field - 1)];
    }

    void addMultiple(double factor) {
        const Quantity top = *--next_;
        const double value = next_[-1].value + multiply(factor, top.value);
        next_[-1] = resultOf(value, sumOfErrors(next_[-1].nbErrors, top.nbErrors));
    }

    void callFunction(std::int32_t code) {
        const FunctionTraits& function = *findFunction(code);
        const std::int32_t count = nbConsumed(function, announced_);
        next_ -= count;
        Quantity result = call(function.code, {next_, static_cast<std::size_t>(count)});
        if (leniency_ != nullptr && isRelation(function.code)) loosen(function.code, result);
        *next_++ = result;
        if (function.nbArguments == FunctionTraits::anyCount) announced_ = -1;
    }

    /// @param result  of the relation between the two values at `next`.
    void loosen(Function relation, Quantity& result) {
        const double left = next_[0].value;
        const double right = next_[1].value;
        const double value = holdsWhenEqual(relation) ? 1.0 : 0.0;
        if (value == result.value || !isClose(left, right, leniency_->tolerance)) return;
        result.value = value;
        if (!leniency_->first) leniency_->first = {left, signOf(relation), right};
    }

    Quantity* next_;  ///< behind the top
    std::span<const double> pool_;
    std::span<const double> point_;
    Leniency* leniency_;
    std::int32_t announced_ = -1;
};

void Run::step(std::int32_t opcode, std::int32_t field) {
    const OpcodeTraits& traits = traitsOf(opcode);
    switch (traits.action) {
        case Action::push: {
            const Quantity operand = takeOperand(traits.operand, field);
            *next_++ = {operand.value, std::isnan(operand.value) ? 1 : 0};
            break;
        }
        case Action::negate: {
            const Quantity operand = takeOperand(traits.operand, field);
            *next_++ = resultOf(-operand.value, operand.nbErrors);
            break;
        }
        case Action::add:
        case Action::subtract:
        case Action::multiply:
        case Action::divide: {
            const Quantity right = takeOperand(traits.operand, field);
            const Quantity left = next_[-1];
            next_[-1] = resultOf(combine(traits.action, left.value, right.value),
                                 sumOfErrors(left.nbErrors, right.nbErrors));
            break;
        }
        case Action::addMultiple:
            addMultiple(constantAt(field));
            break;
        case Action::announce:
            announced_ = field;
            break;
        case Action::callOne:
        case Action::callTwo:
            announced_ = traits.action == Action::callOne ? 1 : 2;
            callFunction(field);
            break;
        case Action::callMany:
            callFunction(field);
            break;
        case Action::nothing:
            break;
        case Action::refuse:
            assert(false);
            break;
    }
}

}  // namespace

Quantity Evaluator::evaluate(const InstructionList& list, std::span<const double> pool,
                             std::span<const double> point, Leniency* leniency) {
    const auto depth = static_cast<std::size_t>(list.depth);
    if (stack_.size() < depth) stack_.resize(depth);
    Run run(stack_.data(), pool, point, leniency);
    for (std::size_t k = 0; k < list.size(); ++k) run.step(list.opcodes[k], list.fields[k]);
    return run.result();
}

}  // namespace norv
