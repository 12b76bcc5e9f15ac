#pragma once

#include <ostream>
#include <stdexcept>
#include <string>

#include "norv/model.hpp"

namespace norv {

/// A model that a format cannot hold.
struct NotWritable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Writes a linear or quadratic model as an .lp file, in words that most programs take. Free rows
/// are left out. Names that the format cannot hold, or that stand for two things, are replaced by
/// x1, x2, … and r1, r2, …, all of them, and a comment says so.
/// Throws NotWritable for an instruction list, naming the row. Errors show in the state of `out`.
void writeLp(std::ostream& out, const Model& model);

/// The same as a free .mps file, with explicit bounds for each column, quadratic sections, and
/// special ordered sets.
void writeMps(std::ostream& out, const Model& model);

/// Which of the two a path's ending asks for; null for another ending.
using ModelWriter = void (*)(std::ostream& out, const Model& model);
[[nodiscard]] ModelWriter writerFor(const std::string& path);

/// @throws NotWritable when a row or the objective is neither linear nor quadratic.
void requireQuadratic(const Model& model);

}  // namespace norv
