#pragma once

#include <cassert>
#include <concepts>
#include <cstddef>
#include <span>
#include <vector>

namespace norv {

/// A vector that takes any integer as index: the host counts in signed integers, and the one
/// conversion, with its check, stands here.
template <class Value>
struct Array : std::vector<Value> {
    using std::vector<Value>::vector;

    template <std::integral Index>
    Value& operator[](Index k) noexcept {
        return std::vector<Value>::operator[](position(k));
    }
    template <std::integral Index>
    const Value& operator[](Index k) const noexcept {
        return std::vector<Value>::operator[](position(k));
    }

private:
    template <std::integral Index>
    std::size_t position(Index k) const noexcept {
        assert(k >= 0 && static_cast<std::size_t>(k) < this->size());
        return static_cast<std::size_t>(k);
    }
};

/// The same for a point, of which nobody owns the array.
class Point {
public:
    explicit Point(std::span<const double> pointValues) noexcept : values_(pointValues) {}

    template <std::integral Index>
    double operator[](Index j) const noexcept {
        assert(j >= 0 && static_cast<std::size_t>(j) < values_.size());
        return values_[static_cast<std::size_t>(j)];
    }

private:
    std::span<const double> values_;
};

}  // namespace norv
