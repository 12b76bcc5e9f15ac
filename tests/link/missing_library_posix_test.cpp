#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "double/instance_text.hpp"
#include "link/entry_points.hpp"

/// Part of the name of a library that cannot be loaded.
static const char* missingLibrary = "hubdclib64";

extern "C" void* dlopen(const char* file, int mode) noexcept {
    static auto* const real =
        reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
    if (file != nullptr && std::strstr(file, missingLibrary) != nullptr) return nullptr;
    return real(file, mode);
}

namespace {

TEST(MissingLibrary, KeepsTheLinkFromBeingReady) {
    void* handle = nullptr;
    xcreate(&handle);
    testing::internal::CaptureStderr();
    EXPECT_EQ(vexReadyAPI(handle, nullptr, nullptr), 1);
    missingLibrary = "prmdclib64";
    norv::Environment environment;
    std::string log;
    environment.setLogSink([&log](std::string_view text) { log += text; });
    const norv::Model model = readInstance("min x", environment);
    EXPECT_EQ(vexReadyAPI(handle, model.handle(), nullptr), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(log, testing::EndsWith("\n*** Can't load option library: Could not load shared "
                                       "library prmdclib64.so: unknown error\n"));
    xfree(&handle);
}

}  // namespace
