#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace engine {

/// A growing array that never moves its elements: appending is O(1) in the worst case, costs no
/// copy, and leaves at most one partly used chunk. A model of millions of expressions is never held
/// twice while it grows.
template <class T>
class ChunkedArray {
public:
    [[nodiscard]] std::size_t size() const { return size_; }

    T& operator[](std::size_t k) { return chunks_[k / chunkLength][k % chunkLength]; }
    const T& operator[](std::size_t k) const { return chunks_[k / chunkLength][k % chunkLength]; }

    /// Strong guarantee: when memory runs out nothing has changed.
    void append(const T& element) {
        if (size_ == chunks_.size() * chunkLength) {
            chunks_.push_back(std::make_unique_for_overwrite<T[]>(chunkLength));
        }
        (*this)[size_] = element;
        ++size_;
    }

private:
    static constexpr std::size_t chunkLength = 4096;

    std::vector<std::unique_ptr<T[]>> chunks_;
    std::size_t size_ = 0;
};

}  // namespace engine
