#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// Names of expressions: labels only, need not be unique, never searched.
class NameTable {
public:
    /// O(1) without hashing: callers ask this of every expression that they build on.
    [[nodiscard]] bool isNamed(ExpressionIndex e) const {
        return static_cast<std::size_t>(e) < named_.size() && named_[static_cast<std::size_t>(e)];
    }
    /// Only when isNamed(e).
    [[nodiscard]] const std::string& nameOf(ExpressionIndex e) const { return names_.at(e); }

    /// Replaces an earlier name.
    void setName(ExpressionIndex e, std::string name) {
        const auto k = static_cast<std::size_t>(e);
        if (k >= named_.size()) named_.resize(k + 1);
        names_[e] = std::move(name);
        named_[k] = true;
    }

private:
    std::unordered_map<ExpressionIndex, std::string> names_;
    std::vector<bool> named_;  ///< [largest named expression + 1]
};

}  // namespace engine
