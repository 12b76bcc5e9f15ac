#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "norv/model.hpp"

namespace norv {

/// The names of a model as a file can hold them: its own, or generated ones where one of its own
/// will not do.
class WrittenNames {
public:
    /// @param forbidden  characters that end a name; blanks and control characters always do.
    /// @param startsLikeNumbers  may a name begin with a digit or a dot?
    WrittenNames(const Model& model, std::string_view forbidden, bool startsLikeNumbers);

    [[nodiscard]] const std::string& row(std::int32_t i) const {
        return rows_[static_cast<std::size_t>(i)];
    }
    [[nodiscard]] const std::string& variable(std::int32_t j) const {
        return variables_[static_cast<std::size_t>(j)];
    }
    /// A line for a comment about replaced names, or nothing.
    [[nodiscard]] const std::string& remark() const { return remark_; }
    /// A name that no row has.
    [[nodiscard]] std::string objective() const;

private:
    std::string remark_;
    std::vector<std::string> rows_;
    std::vector<std::string> variables_;
};

/// The shortest text that reads back as the same number.
[[nodiscard]] std::string writtenNumber(double value);

}  // namespace norv
