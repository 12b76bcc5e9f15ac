#include "host/binding.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace vex {
namespace {

using testing::ElementsAre;

std::int32_t notBound(void*) {
    return -1;
}
std::int32_t answerOne(void*) {
    return 1;
}
std::int32_t answerTwo(void*) {
    return 2;
}

Slot<std::int32_t(void*)> fooOne{&notBound};
Slot<std::int32_t(void*)> fooTwo{&notBound};

constexpr std::int32_t signature[] = {3};
constexpr Operation operations[] = {
    {"fooOne", "fooOne", 0, signature, [](AnyFunction f) noexcept { fooOne.bind(f); }},
    {"fooTwo", "CfooTwo", 0, signature, [](AnyFunction f) noexcept { fooTwo.bind(f); }},
};
constexpr HostInterface fooInterface = {
    "foolib",
    5,
    {"fooXCreate", "CfooXCreateD", "fooXFree", "CfooXCheck", "CfooXAPIVersion"},
    operations};

// A library made of functions; the entries cannot carry state, so it stands here.
struct Library {
    bool loadable = true;
    std::map<std::string, AnyFunction> symbols;
    std::vector<std::string> lookups;
    int nbOpened = 0;
    std::string refusal;  // of the version
    bool creates = true;
    std::int32_t askedVersion = 0;
    char object = 0;
} library;

template <class Function>
AnyFunction any(Function* function) {
    return reinterpret_cast<AnyFunction>(function);
}

std::int32_t createEntry(void** handle) {
    if (library.creates) *handle = &library.object;
    return library.creates ? 1 : 0;
}
std::int32_t createInDirectoryEntry(void**, const char*, char*, std::int32_t) {
    return 0;
}
void freeEntry(void** handle) {
    *handle = nullptr;
}
std::int32_t checkEntry(const char*, std::int32_t, const std::int32_t*, char*) {
    return 1;
}
std::int32_t versionEntry(std::int32_t api, char* message, std::int32_t*) {
    library.askedVersion = api;
    MessageText(message, 4096) << (library.refusal.empty() ? "same version" : library.refusal);
    return library.refusal.empty() ? 1 : 0;
}

const LibraryLoading loading = {[](const std::string&, std::string& reason) -> LibraryHandle {
                                    ++library.nbOpened;
                                    if (!library.loadable) reason = "no such file";
                                    return library.loadable ? &library : nullptr;
                                },
                                [](LibraryHandle, const std::string& symbol) {
                                    library.lookups.push_back(symbol);
                                    const auto found = library.symbols.find(symbol);
                                    return found != library.symbols.end() ? found->second : nullptr;
                                }};

class BindingTest : public testing::Test {
protected:
    BindingTest() {
        library = {};
        library.symbols = {{"fooXCreate", any(createEntry)},
                           {"CfooXCreateD", any(createInDirectoryEntry)},
                           {"fooXFree", any(freeEntry)},
                           {"CfooXCheck", any(checkEntry)},
                           {"CfooXAPIVersion", any(versionEntry)},
                           {"fooOne", any(answerOne)},
                           {"CfooTwo", any(answerTwo)}};
        fooOne.bind(nullptr);
        fooTwo.bind(nullptr);
    }

    bool ready() { return binding.ensureLoaded({message, sizeof message}, loading); }

    Binding binding{fooInterface};
    char message[1024] = "stale";
};

TEST_F(BindingTest, BindsEverySlotAndEmptiesTheMessage) {
    EXPECT_FALSE(binding.isLoaded());
    EXPECT_TRUE(ready());
    EXPECT_TRUE(binding.isLoaded());
    EXPECT_STREQ(message, "");
    EXPECT_EQ(library.askedVersion, 5);
    EXPECT_EQ(fooOne(nullptr), 1);
    EXPECT_EQ(fooTwo(nullptr), 2);
}

TEST_F(BindingTest, SecondReadinessDoesNotTouchTheLibrary) {
    ASSERT_TRUE(ready());
    library = {};
    std::strcpy(message, "stale");
    EXPECT_TRUE(ready());
    EXPECT_STREQ(message, "");
    EXPECT_EQ(library.nbOpened, 0);
    EXPECT_THAT(library.lookups, ElementsAre());
}

TEST_F(BindingTest, LooksUpLowerCaseThenAsWrittenThenUpperCase) {
    library.symbols.erase("fooXFree");
    library.symbols["FOOXFREE"] = any(freeEntry);
    library.symbols["cfootwo"] = any(answerOne);
    ASSERT_TRUE(ready());
    EXPECT_THAT(library.lookups,
                ElementsAre("fooxcreate", "fooXCreate", "cfooxcreated", "CfooXCreateD", "fooxfree",
                            "fooXFree", "FOOXFREE", "cfooxcheck", "CfooXCheck", "cfooxapiversion",
                            "CfooXAPIVersion", "fooone", "fooOne", "cfootwo"));
    EXPECT_EQ(fooTwo(nullptr), 1) << "the lower case form comes first";
}

TEST_F(BindingTest, FailuresSayWhyFillNoSlotAndMayBeRepeated) {
    struct Case {
        const char* what;
        void (*fault)();
        LoadResult result;
        std::string message;
    };
    const Case cases[] = {
        {"not loadable", [] { library.loadable = false; }, LoadResult::refused,
         "Could not load shared library foolib: no such file"},
        {"no create", [] { library.symbols.erase("fooXCreate"); }, LoadResult::symbolMissing,
         "Could not load symbol 'fooXCreate': "},
        {"no create in a directory", [] { library.symbols.erase("CfooXCreateD"); },
         LoadResult::symbolMissing, "Could not load symbol 'CfooXCreateD': "},
        {"no version", [] { library.symbols.erase("CfooXAPIVersion"); }, LoadResult::symbolMissing,
         "Could not load symbol 'CfooXAPIVersion': "},
        {"version refused", [] { library.refusal = "too old"; }, LoadResult::refused, "too old"},
        {"long refusal", [] { library.refusal = std::string(600, 'r'); }, LoadResult::refused,
         std::string(600, 'r')},
        {"refusal longer than the buffer", [] { library.refusal = std::string(2000, 'r'); },
         LoadResult::refused, std::string(1023, 'r')},
        {"no symbol behind a check that passed", [] { library.symbols.erase("CfooTwo"); },
         LoadResult::symbolMissing, "Could not load symbol 'CfooTwo': "},
    };
    const Library sound = library;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        library = sound;
        c.fault();
        MessageText text(message, sizeof message);
        text.clear();
        EXPECT_EQ(binding.load("foolib", text, loading), c.result);
        EXPECT_EQ(message, c.message);
        EXPECT_FALSE(ready());  // asks for the file by stem, width and suffix
        if (!library.loadable) {
            EXPECT_EQ(message, "Could not load shared library foolib64" +
                                   std::string(librarySuffix) + ": no such file");
        }
        EXPECT_FALSE(binding.isLoaded());
        EXPECT_EQ(fooOne(nullptr), -1);
        void* handle = nullptr;
        EXPECT_FALSE(binding.create(&handle, {message, sizeof message}, loading));
        EXPECT_EQ(binding.nbObjects(), 0);
    }
    library = sound;
    EXPECT_TRUE(ready());
    EXPECT_EQ(fooTwo(nullptr), 2);
}

TEST_F(BindingTest, CountsObjects) {
    binding.setUpLocks();
    binding.setUpLocks();
    void* handle = nullptr;
    ASSERT_TRUE(binding.create(&handle, {message, sizeof message}, loading));
    EXPECT_EQ(handle, &library.object);
    EXPECT_EQ(binding.nbObjects(), 1);
    binding.destroy(&handle);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(binding.nbObjects(), 0);

    library.creates = false;
    EXPECT_FALSE(binding.create(&handle, {message, sizeof message}, loading));
    EXPECT_STREQ(message, "Error while creating object");
    EXPECT_EQ(binding.nbObjects(), 0);
    binding.tearDownLocks();
    binding.tearDownLocks();
}

TEST_F(BindingTest, SeveralThreadsBindOnceAndCountEveryObject) {
    binding.setUpLocks();
    std::atomic<int> nbSum{0};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            char text[64];
            if (!binding.ensureLoaded({text, sizeof text}, loading)) return;
            nbSum += fooOne(nullptr) + fooTwo(nullptr);
            for (int k = 0; k < 101; ++k) {
                void* handle = nullptr;
                if (binding.create(&handle, {text, sizeof text}, loading) && k > 0) {
                    binding.destroy(&handle);
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(library.nbOpened, 1);
    EXPECT_EQ(nbSum, 8 * 3);
    EXPECT_EQ(binding.nbObjects(), 8);
    binding.tearDownLocks();
}

}  // namespace
}  // namespace vex
