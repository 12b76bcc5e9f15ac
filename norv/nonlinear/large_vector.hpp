#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace norv {

/// Asks the system to back an array by large pages, which it may ignore. Fresh memory costs a fault
/// for each page: with small ones that is more than what filling it with an expression costs.
/// @param start  aligned to largePageSize.
void preferLargePages(void* start, std::size_t size) noexcept;

constexpr std::size_t largePageSize = std::size_t{1} << 21U;

/// Memory as usual for what is small, on large pages otherwise.
template <class Value>
struct LargePageAllocator {
    using value_type = Value;

    LargePageAllocator() = default;
    template <class Other>
    explicit LargePageAllocator(const LargePageAllocator<Other>& /*other*/) noexcept {}

    Value* allocate(std::size_t n) {
        if (!isLarge(n)) return std::allocator<Value>().allocate(n);
        void* const start = ::operator new(n * sizeof(Value), std::align_val_t(largePageSize));
        preferLargePages(start, n * sizeof(Value));
        return static_cast<Value*>(start);
    }
    void deallocate(Value* start, std::size_t n) noexcept {
        if (isLarge(n)) {
            ::operator delete(start, std::align_val_t(largePageSize));
        } else {
            std::allocator<Value>().deallocate(start, n);
        }
    }

    friend bool operator==(LargePageAllocator, LargePageAllocator) noexcept { return true; }

private:
    static constexpr bool isLarge(std::size_t n) noexcept {
        return n >= 2 * largePageSize / sizeof(Value);
    }
};

/// For arrays that grow with the size of a model.
template <class Value>
using LargeVector = std::vector<Value, LargePageAllocator<Value>>;

}  // namespace norv
