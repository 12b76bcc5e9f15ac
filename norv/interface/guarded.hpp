#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

/// How an operation of a host library runs: with a real object and without letting exceptions out.

namespace norv {

/// Runs `body(*object)` and returns its result; on a null object or an exception, reports
/// "<operation>: <reason>" and returns `fallback`.
///
/// @param report  overloaded per record: `reportFailure(Record*, const std::string&) noexcept`,
///                which takes a null object too.
template <class Record, class Result, class Body>
Result guarded(const char* operation, Record* object, Result fallback, Body&& body) noexcept {
    try {
        if (object == nullptr) throw std::invalid_argument("the object is null");
        return static_cast<Result>(std::forward<Body>(body)(*object));
    } catch (const std::exception& failure) {
        reportFailure(object, operation, failure.what());
    } catch (...) {
        reportFailure(object, operation, "unknown error");
    }
    return fallback;
}

/// The same without a result.
template <class Record, class Body>
void guardedVoid(const char* operation, Record* object, Body&& body) noexcept {
    guarded(operation, object, 0, [&body](Record& record) {
        body(record);
        return 0;
    });
}

}  // namespace norv
