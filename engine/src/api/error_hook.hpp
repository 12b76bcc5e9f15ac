#pragma once

#include <string>

#include "localsolver.h"
#include "model/refusal.hpp"

namespace engine {

/// An error on its way to the hook.
struct Failure {
    ls_error_code code;
    std::string text;
    RefusalSite site;
};

/// What the exception being handled means to the interface. Allocates nothing when memory ran out.
Failure failureOfCurrentException();

/// Replaces the process-wide hook; null removes it. Thread-safe.
void setErrorHook(ls_exception_callback hook, void* userData);

/// Hands the failure to the hook, which may throw: the caller's last step, with no lock held.
/// @param function  name of the refusing function.
void callErrorHook(const Failure& failure, const char* function);

}  // namespace engine
