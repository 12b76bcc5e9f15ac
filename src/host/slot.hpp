#pragma once

namespace vex {

/// A function whose type the holder knows from elsewhere; cast back before it is called.
using AnyFunction = void (*)();

/// One function of a host library, bound at run time: reads as a plain function, costs one
/// indirect call.
///
/// Never null: until the library is bound, and for good when the library lacks the function, the
/// slot holds a handler that reports the missing function and ends the process. Slots are written
/// only by the binding, under its lock; calls take no lock.
template <class Function>
class Slot;

template <class Result, class... Arguments>
class Slot<Result(Arguments...)> {
public:
    using Function = Result(Arguments...);

    constexpr explicit Slot(Function* handler) noexcept : function_(handler), missing_(handler) {}
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    Result operator()(Arguments... arguments) const { return function_(arguments...); }

    /// Binds to `found`, or to the missing-function handler when it is null.
    void bind(AnyFunction found) noexcept {
        function_ = found != nullptr ? reinterpret_cast<Function*>(found) : missing_;
    }

private:
    Function* function_;
    Function* missing_;
};

}  // namespace vex
