#include "host/libraries.hpp"

#include "host/host_interfaces.hpp"

namespace vex {

namespace {

/// Creates an object of the interface and hands it over under its own handle type.
template <class Handle>
std::int32_t createObject(Binding& binding, Handle* handle, MessageText message) {
    void* object = nullptr;
    if (!binding.create(&object, message)) return 0;
    *handle = static_cast<Handle>(object);
    return 1;
}

template <class Handle>
std::int32_t freeObject(Binding& binding, Handle* handle) {
    void* object = *handle;
    binding.destroy(&object);
    *handle = nullptr;
    return 1;
}

}  // namespace

void setUpBindingLocks() {
    for (Binding* binding : {&nmoBinding, &nevBinding, &optBinding, &huxBinding}) {
        binding->setUpLocks();
    }
}

void tearDownBindingLocks() {
    for (Binding* binding : {&nmoBinding, &nevBinding, &optBinding, &huxBinding}) {
        binding->tearDownLocks();
    }
}

std::int32_t nmoGetReady(char* message, std::int32_t length) {
    return nmoBinding.ensureLoaded({message, length}) ? 1 : 0;
}
std::int32_t nevGetReady(char* message, std::int32_t length) {
    return nevBinding.ensureLoaded({message, length}) ? 1 : 0;
}
std::int32_t optGetReady(char* message, std::int32_t length) {
    return optBinding.ensureLoaded({message, length}) ? 1 : 0;
}

std::int32_t nmoLibraryLoaded() {
    return nmoBinding.isLoaded() ? 1 : 0;
}
std::int32_t nevLibraryLoaded() {
    return nevBinding.isLoaded() ? 1 : 0;
}

std::int32_t optCreate(OptionHandle* handle, char* message, std::int32_t length) {
    return createObject(optBinding, handle, {message, length});
}
std::int32_t huxXCreate(AuditHandle* handle, char* message, std::int32_t length) {
    return createObject(huxBinding, handle, {message, length});
}

std::int32_t optFree(OptionHandle* handle) {
    return freeObject(optBinding, handle);
}
std::int32_t huxXFree(AuditHandle* handle) {
    return freeObject(huxBinding, handle);
}

}  // namespace vex
