#include "model/name_table.hpp"

namespace norv {

void NameTable::add(std::string_view name) {
    text_ += name;
    ends_.push_back(text_.size());
}

std::string_view NameTable::given(std::int32_t k) const {
    const std::size_t begin = k == 0 ? 0 : ends_[k - 1];
    return std::string_view(text_).substr(begin, ends_[k] - begin);
}

std::string NameTable::nameOf(std::int32_t k) const {
    const std::string_view name = given(k);
    return name.empty() ? prefix_ + std::to_string(k + 1) : std::string(name);
}

}  // namespace norv
