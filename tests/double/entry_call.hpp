#pragma once

#include <string>

#include "host/codes.hpp"

namespace doubles {

/// What entry points are called with unless the step has other words.
struct Handles {
    void* link = nullptr;
    vex::ModelHandle model = nullptr;
    vex::OptionHandle options = nullptr;
};

/// Calls the entry point of `step`, NAME:ARGUMENT:…, where lists are separated by ','. Arguments
/// left out are the handles or places for what is written; "null" is a null pointer, and "stale" a
/// handle that is no link's.
/// @return "NAME = RESULT", then "link" or "null" for what the place for a link holds, all bytes
///         that were written to the message, its length byte in front, levels and compatibility.
/// @throws std::out_of_range for an unknown entry point.
std::string callEntryPoint(const std::string& step, Handles& handles);

}  // namespace doubles
