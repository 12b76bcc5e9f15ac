#include "model/model_record.hpp"

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace hostapi {

namespace {

std::int32_t checkedIndex(const char* what, std::int32_t index, std::int32_t base,
                          std::int32_t count) {
    // In 64 bits: the index may be anything.
    const std::int64_t offset = static_cast<std::int64_t>(index) - base;
    if (offset >= 0 && offset < count) return static_cast<std::int32_t>(offset);
    throw std::out_of_range(std::string(what) + " " + std::to_string(index) +
                            " is out of range, the instance has " + std::to_string(count) +
                            ", counted from " + std::to_string(base));
}

}  // namespace

std::int32_t ModelRecord::variableAt(std::int32_t index) const {
    return checkedIndex("variable", index, view.indexBase, instance.nbVariables());
}

std::int32_t ModelRecord::rowAt(std::int32_t index) const {
    const std::int32_t position = checkedIndex("row", index, view.indexBase, nbVisibleRows());
    return view.rowAt.empty() ? position : view.rowAt[position];
}

std::int32_t ModelRecord::indexOfRow(std::int32_t row) const noexcept {
    return (view.positionOf.empty() ? row : view.positionOf[row]) + view.indexBase;
}

void ModelRecord::hideFreeRows() {
    const auto& types = instance.rows.types;
    view.rowAt.resize(types.size());
    std::iota(view.rowAt.begin(), view.rowAt.end(), 0);
    const auto firstFree =
        std::stable_partition(view.rowAt.begin(), view.rowAt.end(),
                              [&types](std::int32_t i) { return types[i] != equation_type::free; });
    view.nbRowsHidden = static_cast<std::int32_t>(view.rowAt.end() - firstFree);
    view.positionOf.resize(types.size());
    for (std::int32_t k = 0; k < instance.nbRows(); ++k) view.positionOf[view.rowAt[k]] = k;
}

void reportFailure(const ModelRecord* model, const char* operation, const char* reason) noexcept {
    reportFailure(model == nullptr ? nullptr : model->environment, operation, reason);
}

}  // namespace hostapi
