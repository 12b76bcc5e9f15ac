#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// The host's nonlinear instruction code: opcodes and functions with their names, indexed by their
/// numbers. The names serve error messages; the enumerators what the translation accepts.

namespace vex {

/// Opcodes that the translation accepts. The rest of the table is refused by name.
enum class Opcode : std::int32_t {
    noOp = 0,
    pushV = 1,
    pushI = 2,
    store = 3,
    add = 4,
    addV = 5,
    addI = 6,
    sub = 7,
    subV = 8,
    subI = 9,
    mul = 10,
    mulV = 11,
    mulI = 12,
    div = 13,
    divV = 14,
    divI = 15,
    uMin = 16,
    uMinV = 17,
    header = 18,
    callArg1 = 20,
    callArg2 = 21,
    callArgN = 22,
    funcArgN = 23,
    mulIAdd = 24,
    pushZero = 25
};

constexpr std::array<std::string_view, 31> opcodeNames = {
    "nlNoOp",     "nlPushV",    "nlPushI",    "nlStore",   "nlAdd",      "nlAddV", "nlAddI",
    "nlSub",      "nlSubV",     "nlSubI",     "nlMul",     "nlMulV",     "nlMulI", "nlDiv",
    "nlDivV",     "nlDivI",     "nlUMin",     "nlUMinV",   "nlHeader",   "nlEnd",  "nlCallArg1",
    "nlCallArg2", "nlCallArgN", "nlFuncArgN", "nlMulIAdd", "nlPushZero", "nlChk",  "nlAddO",
    "nlPushO",    "nlInvoc",    "nlStackIn"};

constexpr std::array<std::string_view, 113> functionNames = {
    "mapval",    "ceil",      "floor",   "round",    "mod",           "trunc",        "sign",
    "min",       "max",       "sqr",     "exp",      "log",           "log10",        "sqrt",
    "abs",       "cos",       "sin",     "arctan",   "errf",          "dunfm",        "dnorm",
    "power",     "jdate",     "jtime",   "jstart",   "jnow",          "error",        "gyear",
    "gmonth",    "gday",      "gdow",    "gleap",    "ghour",         "gminute",      "gsecond",
    "curseed",   "timest",    "timeco",  "timeex",   "timecl",        "frac",         "errorl",
    "heaps",     "fact",      "unfmi",   "pi",       "ncpf",          "ncpcm",        "entropy",
    "sigmoid",   "log2",      "boolnot", "booland",  "boolor",        "boolxor",      "boolimp",
    "booleqv",   "relopeq",   "relopgt", "relopge",  "reloplt",       "relople",      "relopne",
    "ifthen",    "rpower",    "edist",   "div",      "div0",          "sllog10",      "sqlog10",
    "slexp",     "sqexp",     "slrec",   "sqrec",    "cvpower",       "vcpower",      "centropy",
    "gmillisec", "maxerror",  "timeel",  "gamma",    "loggamma",      "beta",         "logbeta",
    "gammareg",  "betareg",   "sinh",    "cosh",     "tanh",          "mathlastrc",   "mathlastec",
    "mathoval",  "signpower", "handle",  "ncpvusin", "ncpvupow",      "binomial",     "rehandle",
    "norvver",   "delhandle", "tan",     "arccos",   "arcsin",        "arctan2",      "sleep",
    "heapf",     "cohandle",  "norvrel", "poly",     "licensestatus", "licenselevel", "heaplimit",
    "dummy"};

// A name left out or moved would shift every one behind it.
static_assert(opcodeNames[19] == "nlEnd" && opcodeNames[25] == "nlPushZero" &&
              opcodeNames.back() == "nlStackIn");
static_assert(functionNames[45] == "pi" && functionNames[63] == "ifthen" &&
              functionNames[92] == "signpower" && functionNames[100] == "tan" &&
              functionNames[108] == "poly" && functionNames.back() == "dummy");

}  // namespace vex
