#pragma once

namespace vex {

/// One line: the link's name, version, revision, release date and platform.
extern const char* const buildBanner;

}  // namespace vex
