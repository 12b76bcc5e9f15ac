#include "api/error_hook.hpp"

#include <cstring>
#include <mutex>
#include <new>

namespace engine {

namespace {

struct ErrorHook {
    ls_exception_callback function = nullptr;
    void* userData = nullptr;
};

// The interface has one hook a process.
std::mutex hookMutex;
ErrorHook errorHook;

/// The compiler gives the path it was called with: only the file's own name is told.
const char* baseName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

}  // namespace

Failure failureOfCurrentException() {
    try {
        throw;
    } catch (const Refusal& refusal) {
        return {refusal.code(), refusal.what(), refusal.site()};
    } catch (const std::bad_alloc&) {
        // Short enough to need no allocation.
        return {LS_ERROR_MEMORY, "out of memory", RefusalSite::here()};
    } catch (const std::exception& exception) {
        return {LS_ERROR_INTERNAL, exception.what(), RefusalSite::here()};
    } catch (...) {
        return {LS_ERROR_INTERNAL, "unknown error", RefusalSite::here()};
    }
}

void setErrorHook(ls_exception_callback hook, void* userData) {
    const std::lock_guard lock(hookMutex);
    errorHook = {hook, userData};
}

void callErrorHook(const Failure& failure, const char* function) {
    ErrorHook hook;
    {
        const std::lock_guard lock(hookMutex);
        hook = errorHook;
    }
    if (hook.function == nullptr) return;
    hook.function(failure.code, failure.text.c_str(), baseName(failure.site.fileName), function,
                  failure.site.line, hook.userData);
}

}  // namespace engine
