#pragma once

#include <cstdint>

#include "norv/environment.hpp"
#include "norv/model.hpp"

namespace bench {

/// Terms of the instances: linear and quadratic ones, in rows of ten, or instructions, in rows of
/// a hundred.
enum class Terms { linear, quadratic, instructions };

/// An instance with `nbTerms` terms of the given kind, coefficients other than 1, and a tenth as
/// many variables, in pseudo-random places. The objective has one linear term. Instruction lists
/// are sums of products, multiples of functions, powers and differences.
norv::Model makeInstance(Terms terms, std::int32_t nbTerms, bool withNames,
                         const norv::Environment& environment);

}  // namespace bench
