#include "readers/nl_expressions.hpp"

#include <algorithm>
#include <utility>

#include "readers/read_error.hpp"

namespace norv {

void NlExpressions::setCounts(const NlHeader& header) {
    nbVariables = header.nbVariables;
    definedVariables.assign(static_cast<std::size_t>(header.nbDefinedVariables), noNode);
    functions.resize(static_cast<std::size_t>(header.nbFunctions));
}

NodeIndex NlExpressions::read() {
    do {
        readItem();
        finishOperations();
    } while (!pending.empty());
    const NodeIndex root = operands.back();
    operands.clear();
    return root;
}

/// One item in prefix order: a leaf joins the operands, an operation starts to wait.
void NlExpressions::readItem() {
    constexpr const char* expected = "an expression: o, n, s, l, v, f or h";
    if (input.atEnd()) input.refuse(expected);
    const std::size_t place = input.offset();
    switch (input.letter(expected)) {
        case 'o':
            beginOperation(place);
            break;
        case 'n':
            operands.push_back(store.constant(input.finiteNumber("a finite number after n")));
            break;
        case 's':
            operands.push_back(store.constant(input.shortInteger("an integer after s")));
            break;
        case 'l':
            operands.push_back(store.constant(input.integer("an integer after l")));
            break;
        case 'v':
            operands.push_back(reference());
            break;
        case 'f':
            beginFunctionCall(place);
            break;
        case 'h':
            readString(place);
            break;
        default:
            input.refuseAt(place, "something else", expected);
    }
}

void NlExpressions::beginOperation(std::size_t place) {
    const std::int32_t code = input.integer("the number of an operator after o");
    const NlOperator* op = findNlOperator(code);
    if (op == nullptr) {
        input.refuseAt(place, "operator o" + std::to_string(code),
                       "the number of an operator, 0 to 78");
    }
    std::int32_t nbOperands = op->nbOperands;
    if (nbOperands == NlOperator::list) {
        nbOperands = input.count(code == 54 ? 0 : 1, "a count of operands");
    } else if (nbOperands == NlOperator::piecewise) {
        // Slopes, breakpoints between them, and the argument.
        nbOperands = 2 * input.integerWithin(1, 1 << 29, "a count of pieces");
    }
    pending.push_back({code, nbOperands, operands.size(), place});
}

void NlExpressions::beginFunctionCall(std::size_t place) {
    const auto last = static_cast<std::int32_t>(functions.size()) - 1;
    const std::int32_t function = input.integerWithin(0, last, "the number of a function");
    const std::int32_t nbArguments = input.count(0, "a count of arguments");
    pending.push_back({functionCall - function, nbArguments, operands.size(), place});
}

void NlExpressions::readString(std::size_t place) {
    const std::string_view text = input.countedText("a string after h");
    operands.push_back(makeForeign("the string " + quoted(text), place));
}

NodeIndex NlExpressions::reference() {
    const std::size_t place = input.offset();
    const auto nbAll = nbVariables + static_cast<std::int32_t>(definedVariables.size());
    const std::int32_t j = input.integerWithin(0, nbAll - 1, "the number of a variable");
    if (j < nbVariables) return store.variable(j);
    const NodeIndex node = definedVariables[static_cast<std::size_t>(j - nbVariables)];
    if (node == noNode) {
        input.refuseAt(place, "common expression v" + std::to_string(j) + " before its segment",
                       "segments V before their use");
    }
    return node;
}

/// Closes every operation that has all its operands.
void NlExpressions::finishOperations() {
    while (!pending.empty()) {
        Pending& last = pending.back();
        const auto nbThere = static_cast<std::int32_t>(operands.size() - last.firstOperand);
        if (nbThere < last.nbOperands) return;
        const auto its = std::span(operands).subspan(last.firstOperand);
        NodeIndex node = noNode;
        if (last.op >= 0) node = makeNlOperation(store, last.op, its);
        if (node == noNode) {
            const std::string what =
                last.op >= 0
                    ? "operator o" + std::to_string(last.op) + " (" +
                          std::string(findNlOperator(last.op)->name) + ")"
                    : "imported function " +
                          quoted(functions[static_cast<std::size_t>(functionCall - last.op)]);
            node = makeForeign(what, last.place);
        }
        operands.resize(last.firstOperand);
        operands.push_back(node);
        pending.pop_back();
    }
}

NodeIndex NlExpressions::makeForeign(std::string what, std::size_t place) {
    foreign.push_back({std::move(what), place});
    return store.foreign(static_cast<std::int32_t>(foreign.size() - 1));
}

void NlExpressions::readDefinedVariable() {
    const auto nbAll = nbVariables + static_cast<std::int32_t>(definedVariables.size());
    const std::size_t place = input.offset();
    const std::int32_t number =
        input.integerWithin(nbVariables, nbAll - 1, "the number of a common expression");
    const std::int32_t nbTerms = input.count(0, "a count of linear terms");
    input.integer("the number of the row that uses the common expression");
    NodeIndex& node = definedVariables[static_cast<std::size_t>(number - nbVariables)];
    if (node != noNode)
        input.refuseAt(place, "a second segment V" + std::to_string(number), "one for each");
    std::vector<NodeIndex> terms;
    for (std::int32_t k = 0; k < nbTerms; ++k) {
        const std::int32_t j = input.integerWithin(0, nbAll - 1, "the number of a variable");
        const double coefficient = input.finiteNumber("a finite coefficient");
        const NodeIndex variable =
            j < nbVariables ? store.variable(j)
                            : definedVariables[static_cast<std::size_t>(j - nbVariables)];
        if (variable == noNode)
            input.refuse("linear terms of variables or of segments V further up");
        if (coefficient == 0.0) continue;
        const NodeIndex factors[] = {store.constant(coefficient), variable};
        terms.push_back(coefficient == 1.0 ? variable : store.product(factors));
    }
    const NodeIndex nonlinear = read();
    const bool isZero = store.isConstant(nonlinear) && store.valueOf(nonlinear) == 0.0;
    if (!isZero || terms.empty()) terms.push_back(nonlinear);
    node = store.sum(terms);
}

void NlExpressions::readImportedFunction() {
    const auto last = static_cast<std::int32_t>(functions.size()) - 1;
    const std::int32_t number = input.integerWithin(0, last, "the number of a function");
    input.integer("the type of a function");
    input.integer("the count of a function's arguments");
    functions[static_cast<std::size_t>(number)] = input.word("the name of a function");
}

void NlExpressions::refuseForeign(NodeIndex root, const std::string& user) const {
    if (!store.holdsForeign(root)) return;
    NodeIndex node = root;
    while (store.kind(node) != NodeKind::foreign) {
        const auto its = store.operandsOf(node);
        const auto culprit = std::find_if(
            its.begin(), its.end(), [this](NodeIndex each) { return store.holdsForeign(each); });
        node = *culprit;
    }
    const Foreign& thing = foreign[static_cast<std::size_t>(store.labelOf(node))];
    input.refuseAt(thing.place, thing.what + " in " + user, "operators that this host can express");
}

}  // namespace norv
