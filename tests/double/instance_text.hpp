#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "norv/environment.hpp"
#include "norv/model.hpp"

/// Instances as text, for tables of cases.
///
/// Statements end with ';'. Variables are numbered as they are met first, rows as they are written.
///   cont | bin | int | semicont | semiint  NAME [in LOWER UPPER]   declares
///   min | max  FUNCTION                       the objective; constants in it become its constant
///   NAME : FUNCTION RELATION NUMBER           a row; RELATION: = >= <= =free= =logic=
///   for N STATEMENT                           N times; # stands for 1, 2, …, ## for the next
///   number names off                                 the instance carries no names square a square
///   system
/// A FUNCTION is a list of terms, each with its sign: 3 x, - y, 2 x * y, x * x, 4, and instruction
/// lists, [ 1:x 2:2.5 4 ]: opcodes by number, with the variable, the constant or the number of
/// their field. "0" alone is the function without terms. Numbers may be inf or -inf; undeclared
/// variables are continuous on [-100, 100]. Words are separated by blanks.

/// @throws std::invalid_argument with the word that cannot be read.
norv::Model readInstance(std::string_view text, const norv::Environment& environment);

/// The statements of a text, those behind "for" one by one.
std::vector<std::string> statementsOf(std::string_view text);
