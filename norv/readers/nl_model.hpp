#pragma once

#include "norv/model_builder.hpp"
#include "readers/nl_instance.hpp"

namespace norv {

/// Hands an instance to the host: variables and rows in file order, the logical rows after them,
/// the first objective as a function.
///
/// Nonlinear parts that are quadratic go over as quadratic entries, others as instructions; a
/// constant on its own joins the bounds. A logical row is an equation of the Boolean type: its
/// expression, 0 or 1, equals 1. An integer variable held between 0 and 1 becomes a binary one.
/// Without name files the model has no names. A message about further objectives is among the
/// instance's warnings already.
/// @param builder  empty.
/// @throws ReadError when writing out the common expressions takes more than 100 million
/// instructions, naming the row with which it does.
void buildModel(const NlInstance& instance, ModelBuilder& builder);

}  // namespace norv
