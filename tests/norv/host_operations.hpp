#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "hostapi/handles.hpp"

/// The host's operations as a link sees them: symbols of a library loaded by its file name.

namespace hosttest {

/// A library found like any shared library; stays loaded.
class Library {
public:
    explicit Library(const std::string& stem) {
#if defined(_WIN32)
        module = LoadLibraryA((stem + ".dll").c_str());
#else
        module = dlopen((stem + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
        EXPECT_NE(module, nullptr) << stem;
    }

    template <class Function>
    Function* find(const std::string& symbol) const {
#if defined(_WIN32)
        auto* found = reinterpret_cast<void*>(GetProcAddress(module, symbol.c_str()));
#else
        void* found = dlsym(module, symbol.c_str());
#endif
        EXPECT_NE(found, nullptr) << "missing symbol " << symbol;
        return reinterpret_cast<Function*>(found);
    }

private:
#if defined(_WIN32)
    HMODULE module;
#else
    void* module;
#endif
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
