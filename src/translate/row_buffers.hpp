#pragma once

#include <cstdint>
#include <memory>

namespace vex {

/// Scratch arrays into which the host writes one row at a time.
///
/// Model setup sizes one record for the largest row and every row reuses it; the definition of a
/// variable, which may be built in the middle of another row, brings a record of its own. Contents
/// are undefined between rows. Growing discards them.
struct RowBuffers {
    /// Makes room for `nbEntries` entries of a sparse or quadratic part; 0 frees nothing.
    void reserveEntries(std::int32_t nbEntries);
    /// Makes room for `nbInstructions` + 1 instructions: there is always at least one slot.
    void reserveInstructions(std::int32_t nbInstructions);

    /// [size] Variables of the sparse part; first variables of quadratic pairs.
    std::unique_ptr<std::int32_t[]> colIdx;
    /// [size] Nonzero where the variable occurs nonlinearly; second variables of quadratic pairs.
    std::unique_ptr<std::int32_t[]> nlFlags;
    /// [size] Coefficients of the sparse part; of quadratic pairs.
    std::unique_ptr<double[]> values;
    std::int32_t size = 0;

    /// [instrSize + 1] Opcodes of a row's instruction list.
    std::unique_ptr<std::int32_t[]> instrOpcodes;
    /// [instrSize + 1] Fields of the same instructions.
    std::unique_ptr<std::int32_t[]> instrFields;
    std::int32_t instrSize = 0;
};

}  // namespace vex
