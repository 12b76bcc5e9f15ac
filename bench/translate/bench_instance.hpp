#pragma once

#include <cstdint>

#include "norv/environment.hpp"
#include "norv/model.hpp"

namespace bench {

/// Terms of the instances, all in rows of ten.
enum class Terms { linear, quadratic };

/// An instance with `nbTerms` terms of the given kind, coefficients other than 1, and a tenth as
/// many variables, in pseudo-random places. The objective has one term.
norv::Model makeInstance(Terms terms, std::int32_t nbTerms, bool withNames,
                         const norv::Environment& environment);

}  // namespace bench
