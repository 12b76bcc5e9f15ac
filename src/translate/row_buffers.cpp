#include "translate/row_buffers.hpp"

namespace vex {

void RowBuffers::reserveEntries(std::int32_t nbEntries) {
    if (nbEntries <= size) return;
    const auto room = static_cast<std::size_t>(nbEntries);
    // Released first: the contents are scratch, both generations need not live at once. Left
    // uncleared: every definition brings buffers as long as the longest list of the instance.
    colIdx.reset();
    nlFlags.reset();
    values.reset();
    size = 0;
    colIdx = std::make_unique_for_overwrite<std::int32_t[]>(room);
    nlFlags = std::make_unique_for_overwrite<std::int32_t[]>(room);
    values = std::make_unique_for_overwrite<double[]>(room);
    size = nbEntries;
}

void RowBuffers::reserveInstructions(std::int32_t nbInstructions) {
    if (instrOpcodes != nullptr && nbInstructions <= instrSize) return;
    const auto room = static_cast<std::size_t>(nbInstructions) + 1;
    instrOpcodes.reset();
    instrFields.reset();
    instrSize = 0;
    instrOpcodes = std::make_unique_for_overwrite<std::int32_t[]>(room);
    instrFields = std::make_unique_for_overwrite<std::int32_t[]>(room);
    instrSize = nbInstructions;
}

}  // namespace vex
