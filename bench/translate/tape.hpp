#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostapi/handles.hpp"

/// The calls that model setup makes, flat: one record a call, in order.

namespace bench {

enum class CallKind : std::int32_t {
    createExpression,      ///< a: operator
    createIntConstant,     ///< integer
    createDoubleConstant,  ///< real
    addOperand,            ///< a: expression, b: operand
    setName,               ///< a: expression, b: offset of the text
    addConstraint,         ///< a: expression
    addObjective,          ///< a: expression, b: direction
    close,
    isNamed,      ///< a: expression; so for all questions
    getOperator,  ///<
    nbOperands,   ///<
    getOperand    ///< b: position
};

struct Call {
    CallKind kind;
    std::int32_t a;
    union {
        std::int32_t b;
        std::int64_t integer;
        double real;
    };
};

struct Tape {
    std::vector<Call> calls;
    std::string names;  ///< terminated texts, one after the other
};

/// Runs model setup of `model` on functions that write `*tape` and compute nothing. Exported by the
/// module "translate_tape_writer", which has a link of its own inside.
using WriteTape = void(hostapi::ModelHandle model, hostapi::EnvironmentHandle environment,
                       hostapi::OptionHandle options, Tape* tape);

}  // namespace bench
