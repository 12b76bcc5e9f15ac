#pragma once

#include <string>

#include "host/library_loading.hpp"

namespace vex::test {

/// Loads libraries from `folder` instead of searching for them.
inline LibraryLoading loadingFrom(const std::string& folder) {
    return {[folder](const std::string& fileName, std::string& reason) {
                return platformLoading().open(folder + "/" + fileName, reason);
            },
            platformLoading().find};
}

}  // namespace vex::test
