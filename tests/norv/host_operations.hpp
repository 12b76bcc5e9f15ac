#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "host/library_loading.hpp"
#include "hostapi/handles.hpp"

/// The host's operations as a link sees them: symbols of a library loaded by its file name.

namespace hosttest {

/// A library found like any shared library; stays loaded.
class Library {
public:
    explicit Library(const std::string& stem) {
        std::string reason;
        library_ = vex::platformLoading().open(stem + vex::librarySuffix, reason);
        EXPECT_NE(library_, nullptr) << reason;
    }

    template <class Function>
    Function* find(const std::string& symbol) const {
        const vex::AnyFunction found = vex::platformLoading().find(library_, symbol);
        EXPECT_NE(found, nullptr) << "missing symbol " << symbol;
        return reinterpret_cast<Function*>(found);
    }

private:
    vex::LibraryHandle library_ = nullptr;
};

#define HOST_SYMBOL_plain(name) #name
#define HOST_SYMBOL_text(name) "C" #name
#define HOST_OPERATION(name, form, ...)       \
    std::type_identity_t<__VA_ARGS__>* name = \
        library.find<std::type_identity_t<__VA_ARGS__>>(HOST_SYMBOL_##form(name));

struct HubOperations {
    Library library{"hubdclib64"};
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
};

struct OptionOperations {
    Library library{"prmdclib64"};
#include "hostapi/opt_operations.inc"
};

#undef HOST_OPERATION
#undef HOST_SYMBOL_plain
#undef HOST_SYMBOL_text

inline const HubOperations& hub() {
    static const HubOperations operations;
    return operations;
}

inline const OptionOperations& opt() {
    static const OptionOperations operations;
    return operations;
}

}  // namespace hosttest
