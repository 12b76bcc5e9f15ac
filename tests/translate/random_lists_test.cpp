/// Instruction lists at random: the engine's value of what a list is converted to against the
/// host's evaluation of the list itself.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <unordered_set>

#include "double/host_double.hpp"
#include "double/instance_text.hpp"
#include "host/operations.hpp"
#include "nonlinear/evaluator.hpp"
#include "nonlinear/functions.hpp"
#include "norv/nonlinear/assembler.hpp"
#include "translate/nlocalsolver.hpp"

namespace {

using localsolver::LSExpression;
using localsolver::LSOperator;
using norv::Action;

/// The third variable is integer, the fourth binary.
constexpr const char* named = "cont x in -4 4 ; cont y in -4 4 ; int n in -5 5 ; bin b";
constexpr const char* unnamed =
    "cont x in -4 4 ; cont y in -4 4 ; int n in -5 5 ; bin b ; names off";
constexpr std::int32_t nbVariables = 4;
const std::vector<double> pool = {2.0, -1.0, 0.5, 1.0, -2.5, 3.0, 0.1, 7.25, 1e3, 0x1p12, 0.0};
constexpr std::int32_t zeroEntry = 11;

/// Well-formed lists: any number of arguments may be announced to functions that take a fixed one.
class ListGenerator {
public:
    void startFrom(std::uint32_t seed) { random.seed(seed); }

    norv::InstructionList next() {
        list = {};
        height = 0;
        announced = -1;
        const auto length = 2U + static_cast<std::size_t>(below(24));
        while (list.size() < length || height == 0) step(anyOpcode());
        while (height > 1) step(anyOpcode(), /*mayGrow=*/false);
        return list;
    }

    /// How often each has been written, by number.
    std::vector<int> nbOpcodes = std::vector<int>(norv::opcodeTable.size());
    std::vector<int> nbCalls = std::vector<int>(norv::functionTable.size());

private:
    std::int32_t below(std::int32_t bound) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(bound));
    }

    const norv::OpcodeTraits& anyOpcode() {
        constexpr norv::Opcode frequent[] = {norv::nlPushV,    norv::nlPushV,    norv::nlPushI,
                                             norv::nlCallArg1, norv::nlCallArg2, norv::nlCallArgN};
        const std::int32_t k = below(40);
        return norv::traitsOf(k < 31 ? k : frequent[static_cast<std::size_t>(k) % 6]);
    }

    /// Adds the instruction unless the stack is too low for it.
    void step(const norv::OpcodeTraits& opcode, bool mayGrow = true) {
        const bool takesTop = opcode.operand == norv::Operand::stack;
        switch (opcode.action) {
            case Action::refuse:
                return;
            case Action::nothing:
                return add(opcode, below(20) - 10, 0, 0);
            case Action::announce:
                announced = below(5);
                return add(opcode, announced, 0, 0);
            case Action::push:
                return mayGrow ? add(opcode, fieldOf(opcode), 0, 1) : void();
            case Action::negate:
                return takesTop || mayGrow ? add(opcode, fieldOf(opcode), takesTop ? 1 : 0, 1)
                                           : void();
            case Action::addMultiple:
                return add(opcode, fieldOf(opcode), 2, 1);
            case Action::callOne:
            case Action::callTwo:
            case Action::callMany:
                return addCall(opcode, mayGrow);
            default:
                return add(opcode, fieldOf(opcode), takesTop ? 2 : 1, 1);
        }
    }

    void addCall(const norv::OpcodeTraits& opcode, bool mayGrow) {
        const norv::FunctionTraits& function =
            norv::usedFunctions()[static_cast<std::size_t>(below(37))];
        const std::int32_t count = opcode.action == Action::callOne   ? 1
                                   : opcode.action == Action::callTwo ? 2
                                                                      : announced;
        if (function.code == norv::Function::poly && count < 0) return;
        const std::int32_t nbPopped = norv::nbConsumed(function, count);
        if (nbPopped > height || (nbPopped == 0 && !mayGrow)) return;
        add(opcode, static_cast<std::int32_t>(function.code), nbPopped, 1);
        ++nbCalls[static_cast<std::size_t>(function.code)];
        const bool usesUp = function.nbArguments == norv::FunctionTraits::anyCount;
        announced = usesUp ? -1 : count;
    }

    void add(const norv::OpcodeTraits& opcode, std::int32_t field, std::int32_t nbPopped,
             std::int32_t nbPushed) {
        if (nbPopped > height) return;
        height += nbPushed - nbPopped;
        list.depth = std::max(list.depth, height);
        list.add(opcode.code, field);
        ++nbOpcodes[static_cast<std::size_t>(opcode.code)];
    }

    std::int32_t fieldOf(const norv::OpcodeTraits& opcode) {
        if (opcode.operand == norv::Operand::variable) return 1 + below(nbVariables);
        if (opcode.operand != norv::Operand::constant) return below(20) - 10;
        // The conversion drops what a constant 0 multiplies, errors included.
        const bool scales = opcode.action == Action::multiply || opcode.action == Action::divide ||
                            opcode.action == Action::addMultiple;
        return 1 + below(scales ? zeroEntry - 1 : zeroEntry);
    }

    std::mt19937 random;
    norv::InstructionList list;
    std::int32_t height = 0;
    std::int32_t announced = -1;
};

std::vector<double> randomPoint(std::mt19937& random) {
    std::uniform_real_distribution<double> level(-4.0, 4.0);
    const auto coordinate = [&](bool isWhole) {
        return isWhole ? std::round(level(random)) : level(random);
    };
    return {coordinate(random() % 2 == 0), coordinate(random() % 2 == 0), coordinate(true),
            static_cast<double>(random() % 2)};
}

bool agree(const norv::Quantity& host, double engine) {
    if (host.nbErrors > 0 || !std::isfinite(engine))
        return host.nbErrors > 0 && !std::isfinite(engine);
    return std::fabs(host.value - engine) <= 1e-8 * std::fmax(1e-2, std::fabs(host.value));
}

/// May the engine's value of this operation differ from the host's by what the two agreed on?
bool isExcused(LSExpression e) {
    const auto value = [e](std::int32_t k) { return e.getOperand(k).getDoubleValue(); };
    const LSOperator op = e.getOperator();
    if (op == LS_OP_PROD && std::isfinite(e.getDoubleValue())) {
        // 0 * 0 ** -1 is 0, because signed powers are made of it.
        for (std::int32_t k = 0; k < e.getNbOperands(); ++k) {
            if (!std::isfinite(value(k))) return true;
        }
    } else if (op >= LS_OP_EQ && op <= LS_OP_LT) {
        // Relations between doubles have a tolerance.
        const double gap = std::fabs(value(0) - value(1));
        return gap > 0.0 && gap <= 1.1e-6 * std::fmax(1.0, std::fabs(value(0)));
    } else if (op == LS_OP_CEIL || op == LS_OP_FLOOR || op == LS_OP_ROUND || op == LS_OP_POW) {
        // Whether a computed number is whole, or half of one, is a matter of rounding.
        const double twice = 2.0 * value(op == LS_OP_POW ? 1 : 0);
        return std::fabs(twice - std::round(twice)) < 1e-9 * std::fmax(1.0, std::fabs(twice));
    }
    return false;
}

bool hasExcuse(LSExpression root) {
    std::vector<LSExpression> open = {root};
    std::unordered_set<std::int32_t> known;
    while (!open.empty()) {
        const LSExpression e = open.back();
        open.pop_back();
        if (isExcused(e)) return true;
        for (std::int32_t k = 0; k < e.getNbOperands(); ++k) {
            if (known.insert(e.getOperand(k).getIndex()).second) open.push_back(e.getOperand(k));
        }
    }
    return false;
}

struct Tally {
    int nbEqual = 0, nbUndefined = 0, nbExcused = 0;
};

void compareAtPoint(vex::NorvLocalSolver& link, std::vector<norv::InstructionList>& lists,
                    const std::vector<LSExpression>& expressions, const std::vector<double>& point,
                    Tally& tally) {
    for (std::size_t j = 0; j < point.size(); ++j) {
        const LSExpression x = link.getVariable(static_cast<std::int32_t>(j));
        if (x.isDouble())
            x.setDoubleValue(point[j]);
        else
            x.setIntValue(static_cast<std::int64_t>(point[j]));
    }
    for (std::size_t k = 0; k < lists.size(); ++k) {
        const norv::Quantity host = norv::Evaluator().evaluate(lists[k], pool, point);
        const double engine = expressions[k].getDoubleValue();
        if (agree(host, engine)) {
            ++(host.nbErrors > 0 ? tally.nbUndefined : tally.nbEqual);
        } else if (hasExcuse(expressions[k])) {
            ++tally.nbExcused;
        } else {
            ADD_FAILURE() << norv::describe(lists[k], pool) << "\nat " << testing::PrintToString(point) << ": host " << host.value
                          << " with " << host.nbErrors << " errors, engine " << engine;
        }
    }
}

TEST(RandomLists, KeepTheirValuesWhenConverted) {
    doubles::bindHost();
    ListGenerator generator;
    Tally tally;
    for (std::uint32_t seed = 1; seed <= 200 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        generator.startFrom(seed);
        const norv::Environment environment;
        const norv::Model model = readInstance(seed % 2 == 0 ? named : unnamed, environment);
        vex::NorvLocalSolver link;
        link.nmo = model.handle();
        vex::nmoIndexBaseSet(link.nmo, 0);
        link.solver = std::make_unique<localsolver::LocalSolver>();
        link.variables.resize(nbVariables);
        std::vector<norv::InstructionList> lists(60);
        std::vector<LSExpression> expressions;
        for (norv::InstructionList& list : lists) {
            list = generator.next();
            expressions.push_back(link.convertExpression(static_cast<std::int32_t>(list.size()),
                                                         list.opcodes.data(), list.fields.data(),
                                                         pool.data()));
        }
        link.solver->getModel().close();
        std::mt19937 random(seed);
        for (int p = 0; p < 5; ++p)
            compareAtPoint(link, lists, expressions, randomPoint(random), tally);
    }
    for (const norv::OpcodeTraits& each : norv::opcodeTable) {
        const bool isAccepted = each.action != Action::refuse;
        EXPECT_EQ(generator.nbOpcodes[static_cast<std::size_t>(each.code)] > 1000, isAccepted)
            << each.name;
    }
    for (const norv::FunctionTraits& each : norv::usedFunctions())
        EXPECT_GT(generator.nbCalls[static_cast<std::size_t>(each.code)], 500) << each.name;
    EXPECT_GT(tally.nbEqual, 30000);
    EXPECT_GT(tally.nbUndefined, 10000);
    EXPECT_LT(tally.nbExcused, 100);
}

}  // namespace
