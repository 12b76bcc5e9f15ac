#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "hostapi/handles.hpp"

/// Signatures of host operations in the host's type codes, derived from C++ function types.
///
/// A signature is the result's code followed by one code per argument. The object that an
/// operation works on, its first argument, is counted neither in the argument count nor in the
/// signature. A type that has no code does not compile.

namespace hostapi {

/// The code of a result or argument, TypeCode<Type>::value.
template <class Type>
struct TypeCode;  // no definition: only the types below may cross the interface

/// A code as a type, to inherit from.
template <std::int32_t Code>
struct TypeCodeIs {
    static constexpr std::int32_t value = Code;
};

// Fixed by the host: nothing, handles of any kind, a 32-bit integer by value, a text that is read.
template <>
struct TypeCode<void> : TypeCodeIs<0> {};
template <>
struct TypeCode<ModelHandle> : TypeCodeIs<1> {};
template <>
struct TypeCode<EnvironmentHandle> : TypeCodeIs<1> {};
template <>
struct TypeCode<OptionHandle> : TypeCodeIs<1> {};
template <>
struct TypeCode<AuditHandle> : TypeCodeIs<1> {};
template <>
struct TypeCode<DictionaryHandle> : TypeCodeIs<1> {};
template <>
struct TypeCode<std::int32_t> : TypeCodeIs<3> {};
template <>
struct TypeCode<const char*> : TypeCodeIs<11> {};
// Ours until the host's list has them: correct them here, and nowhere else.
template <>
struct TypeCode<char*> : TypeCodeIs<12> {};  ///< text buffer
template <>
struct TypeCode<double> : TypeCodeIs<13> {};
template <>
struct TypeCode<std::int32_t*> : TypeCodeIs<14> {};  ///< one or an array, written
template <>
struct TypeCode<double*> : TypeCodeIs<15> {};  ///< one or an array, written
template <>
struct TypeCode<const double*> : TypeCodeIs<16> {};  ///< array, read
template <>
struct TypeCode<void**> : TypeCodeIs<17> {};  ///< cursor of a walk

/// The codes of a whole operation: Signature<std::int32_t(ModelHandle, double)> and the like.
template <class Function>
struct Signature;

template <class Result, class Object, class... Arguments>
struct Signature<Result(Object, Arguments...)> {
    /// Without the object.
    static constexpr std::int32_t nbArguments = sizeof...(Arguments);
    /// [nbArguments + 1], the result's code first.
    static constexpr std::array<std::int32_t, sizeof...(Arguments) + 1> codes = {
        TypeCode<Result>::value, TypeCode<Arguments>::value...};
};

}  // namespace hostapi
