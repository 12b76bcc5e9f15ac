#include "readers/nl_expressions.hpp"

#include <algorithm>
#include <utility>

#include "readers/read_error.hpp"

namespace norv {

void NlExpressions::setCounts(const NlHeader& header) {
    nbVariables_ = header.nbVariables;
    definedVariables_.assign(static_cast<std::size_t>(header.nbDefinedVariables), noNode);
    functions_.resize(static_cast<std::size_t>(header.nbFunctions));
}

NodeIndex NlExpressions::read() {
    do {
        readItem();
        finishOperations();
    } while (!pending_.empty());
    const NodeIndex root = operands_.back();
    operands_.clear();
    return root;
}

/// One item in prefix order: a leaf joins the operands, an operation starts to wait.
void NlExpressions::readItem() {
    constexpr const char* expected = "an expression: o, n, s, l, v, f or h";
    if (input_.atEnd()) input_.refuse(expected);
    const std::size_t place = input_.offset();
    switch (input_.letter(expected)) {
        case 'o':
            beginOperation(place);
            break;
        case 'n':
            operands_.push_back(store_.constant(input_.finiteNumber("a finite number after n")));
            break;
        case 's':
            operands_.push_back(store_.constant(input_.shortInteger("an integer after s")));
            break;
        case 'l':
            operands_.push_back(store_.constant(input_.integer("an integer after l")));
            break;
        case 'v':
            operands_.push_back(reference());
            break;
        case 'f':
            beginFunctionCall(place);
            break;
        case 'h':
            readString(place);
            break;
        default:
            input_.refuseAt(place, "something else", expected);
    }
}

void NlExpressions::beginOperation(std::size_t place) {
    const std::int32_t code = input_.integer("the number of an operator after o");
    const NlOperator* op = findNlOperator(code);
    if (op == nullptr) {
        input_.refuseAt(place, "operator o" + std::to_string(code),
                        "the number of an operator, 0 to 78");
    }
    std::int32_t nbOperands = op->nbOperands;
    if (nbOperands == NlOperator::list) {
        nbOperands = input_.count(code == 54 ? 0 : 1, "a count of operands");
    } else if (nbOperands == NlOperator::piecewise) {
        // Slopes, breakpoints between them, and the argument.
        nbOperands = 2 * input_.integerWithin(1, 1 << 29, "a count of pieces");
    }
    pending_.push_back({code, nbOperands, operands_.size(), place});
}

void NlExpressions::beginFunctionCall(std::size_t place) {
    const auto last = static_cast<std::int32_t>(functions_.size()) - 1;
    const std::int32_t function = input_.integerWithin(0, last, "the number of a function");
    const std::int32_t nbArguments = input_.count(0, "a count of arguments");
    pending_.push_back({functionCall - function, nbArguments, operands_.size(), place});
}

void NlExpressions::readString(std::size_t place) {
    const std::string_view text = input_.countedText("a string after h");
    operands_.push_back(makeForeign("the string " + quoted(text), place));
}

NodeIndex NlExpressions::reference() {
    const std::size_t place = input_.offset();
    const auto nbAll = nbVariables_ + static_cast<std::int32_t>(definedVariables_.size());
    const std::int32_t j = input_.integerWithin(0, nbAll - 1, "the number of a variable");
    if (j < nbVariables_) return store_.variable(j);
    const NodeIndex node = definedVariables_[static_cast<std::size_t>(j - nbVariables_)];
    if (node == noNode) {
        input_.refuseAt(place, "common expression v" + std::to_string(j) + " before its segment",
                        "segments V before their use");
    }
    return node;
}

/// Closes every operation that has all its operands.
void NlExpressions::finishOperations() {
    while (!pending_.empty()) {
        Pending& last = pending_.back();
        const auto nbThere = static_cast<std::int32_t>(operands_.size() - last.firstOperand);
        if (nbThere < last.nbOperands) return;
        const auto its = std::span(operands_).subspan(last.firstOperand);
        NodeIndex node = noNode;
        if (last.op >= 0) {
            const bool isPiecewise = findNlOperator(last.op)->nbOperands == NlOperator::piecewise;
            node = isPiecewise ? makePiecewise(its) : makeNlOperation(store_, last.op, its);
        }
        if (node == noNode) {
            const std::string what =
                last.op >= 0
                    ? "operator o" + std::to_string(last.op) + " (" +
                          std::string(findNlOperator(last.op)->name) + ")"
                    : "imported function " +
                          quoted(functions_[static_cast<std::size_t>(functionCall - last.op)]);
            node = makeForeign(what, last.place);
        }
        operands_.resize(last.firstOperand);
        operands_.push_back(node);
        pending_.pop_back();
    }
}

/// Slopes and breakpoints in turn, then the argument.
NodeIndex NlExpressions::makePiecewise(std::span<const NodeIndex> operands) {
    const NodeIndex argument = operands.back();
    PiecewiseLinear term = {
        argument, nbVariables_ + static_cast<std::int32_t>(piecewise_.size()), {}, {}};
    bool isPlain = argument < nbVariables_;
    for (std::size_t k = 0; k + 1 < operands.size() && isPlain; ++k) {
        isPlain = store_.isConstant(operands[k]);
        if (isPlain)
            (k % 2 == 0 ? term.slopes : term.breakpoints).push_back(store_.valueOf(operands[k]));
    }
    if (isPlain && std::ranges::is_sorted(term.breakpoints)) {
        piecewise_.push_back(term);
        if (term.value < store_.nbVariables()) return store_.variable(term.value);
    }
    return makeNlOperation(store_, /*code=*/64, operands);
}

NodeIndex NlExpressions::makeForeign(std::string what, std::size_t place) {
    foreign_.push_back({std::move(what), place});
    return store_.foreign(static_cast<std::int32_t>(foreign_.size() - 1));
}

void NlExpressions::readDefinedVariable() {
    const auto nbAll = nbVariables_ + static_cast<std::int32_t>(definedVariables_.size());
    const std::size_t place = input_.offset();
    const std::int32_t number =
        input_.integerWithin(nbVariables_, nbAll - 1, "the number of a common expression");
    const std::int32_t nbTerms = input_.count(0, "a count of linear terms");
    input_.integer("the number of the row that uses the common expression");
    NodeIndex& node = definedVariables_[static_cast<std::size_t>(number - nbVariables_)];
    if (node != noNode)
        input_.refuseAt(place, "a second segment V" + std::to_string(number), "one for each");
    std::vector<NodeIndex> terms;
    for (std::int32_t k = 0; k < nbTerms; ++k) {
        const std::int32_t j = input_.integerWithin(0, nbAll - 1, "the number of a variable");
        const double coefficient = input_.finiteNumber("a finite coefficient");
        const NodeIndex variable =
            j < nbVariables_ ? store_.variable(j)
                             : definedVariables_[static_cast<std::size_t>(j - nbVariables_)];
        if (variable == noNode)
            input_.refuse("linear terms of variables or of segments V further up");
        if (coefficient == 0.0) continue;
        const NodeIndex factors[] = {store_.constant(coefficient), variable};
        terms.push_back(coefficient == 1.0 ? variable : store_.product(factors));
    }
    const NodeIndex nonlinear = read();
    const bool isZero = store_.isConstant(nonlinear) && store_.valueOf(nonlinear) == 0.0;
    if (!isZero || terms.empty()) terms.push_back(nonlinear);
    node = store_.sum(terms);
}

void NlExpressions::readImportedFunction() {
    const auto last = static_cast<std::int32_t>(functions_.size()) - 1;
    const std::int32_t number = input_.integerWithin(0, last, "the number of a function");
    input_.integer("the type of a function");
    input_.integer("the count of a function's arguments");
    functions_[static_cast<std::size_t>(number)] = input_.word("the name of a function");
}

void NlExpressions::refuseForeign(NodeIndex root, const std::string& user) const {
    if (!store_.holdsForeign(root)) return;
    NodeIndex node = root;
    while (store_.kind(node) != NodeKind::foreign) {
        const auto its = store_.operandsOf(node);
        const auto culprit = std::find_if(
            its.begin(), its.end(), [this](NodeIndex each) { return store_.holdsForeign(each); });
        node = *culprit;
    }
    const Foreign& thing = foreign_[static_cast<std::size_t>(store_.labelOf(node))];
    try {
        input_.refuseAt(thing.place, thing.what + " in " + user,
                        "operators that this host can express");
    } catch (const ReadError& error) {
        throw UnsupportedError(error.what());
    }
}

}  // namespace norv
