#pragma once

#include <memory>
#include <string>

namespace norv {

/// A library that was loaded at run time and stays loaded as long as this object.
class SharedLibrary {
public:
    /// File name extension of shared libraries, with its dot.
    static const char* const suffix;

    /// @param name  a path, or a bare file name that is looked up beside the program first.
    /// Throws std::runtime_error with the loader's own words.
    explicit SharedLibrary(const std::string& name);

    /// The function exported as `symbol`.
    /// Throws std::runtime_error when there is none.
    template <class Function>
    [[nodiscard]] Function* function(const char* symbol) const {
        return reinterpret_cast<Function*>(find(symbol));
    }
    /// The same, or null.
    template <class Function>
    [[nodiscard]] Function* findFunction(const char* symbol) const {
        return reinterpret_cast<Function*>(addressOf(symbol));
    }

private:
    struct Unload {
        void operator()(void* library) const;
    };
    using AnyFunction = void (*)();
    [[nodiscard]] AnyFunction find(const char* symbol) const;
    [[nodiscard]] AnyFunction addressOf(const char* symbol) const noexcept;

    std::unique_ptr<void, Unload> library_;
    std::string name_;
};

/// The directory of the running program, with a separator at its end.
std::string programDirectory();

}  // namespace norv
