#include "double/exchange.hpp"

#include <cstdlib>
#include <new>
#include <stdexcept>

#include "host/library_loading.hpp"

// Not inlined: the compiler would take the pair below for a mismatch of new and free.
// NOLINTBEGIN(cppcoreguidelines-*): this is where memory is managed by hand
[[gnu::noinline]] void* operator new(std::size_t size) {
    using doubles::failingAllocation;
    void* const memory = doubles::isInLink && failingAllocation > 0 && --failingAllocation == 0
                             ? nullptr
                             : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-*)

namespace doubles {

using std::string_literals::operator""s;

thread_local bool isInLink = false;
thread_local int failingAllocation = 0;

Exchange& exchange() {
    static Exchange instance;
    return instance;
}

void Exchange::answer(const std::string& key, const std::string& values) {
    answers[key] = {split(values, " then "), 0};
}

const std::string* Exchange::answerTo(const std::string& name, const std::string& arguments) {
    auto found = answers.find(name + "(" + arguments + ")");
    if (found == answers.end()) found = answers.find(name);
    if (found == answers.end()) return nullptr;
    auto& [values, next] = found->second;
    const std::string& value = values[next];
    if (next + 1 < values.size()) ++next;
    return value == "real" ? nullptr : &value;
}

void Exchange::spoil(std::int64_t call, Fault fault) {
    nbCounted = 0;
    spoiledCall = call;
    spoiledFault = fault;
    spoiledName.clear();
}

Fault Exchange::faultOf(const std::string& name, bool mayFail) {
    if (!mayFail || ++nbCounted != spoiledCall) return Fault::none;
    spoiledName = name;
    return spoiledFault;
}

void (*realFunction(const std::string& symbol))() {
    const vex::LibraryLoading& loading = vex::platformLoading();
    const std::string suffix = vex::librarySuffix;
    std::string reason;
    for (const auto& library :
         {"hubdclib64" + suffix, "prmdclib64" + suffix, VEXCC_ENGINE_LIBRARY + ""s}) {
        const auto found = loading.find(loading.open(library, reason), symbol);
        if (found != nullptr) return found;
    }
    throw std::runtime_error(symbol + ": " + reason);
}

std::string quoted(std::string_view text) {
    std::string all = "\"";
    for (const char c : text) {
        const int code = static_cast<unsigned char>(c);
        const bool isPlain = code >= ' ' && code <= '~';
        all += isPlain ? std::string(1, c) : c == '\n' ? "\\n" : "\\" + std::to_string(code);
    }
    return all + "\"";
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
    std::vector<std::string> pieces;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        std::string_view piece = text.substr(at, end - at);
        while (!piece.empty() && piece.front() == ' ') piece.remove_prefix(1);
        while (!piece.empty() && piece.back() == ' ') piece.remove_suffix(1);
        pieces.emplace_back(piece);
        at = end + separator.size();
    }
    return pieces;
}

std::string replaced(std::string text, std::string_view old, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(old, at)) != text.npos; at += by.size())
        text.replace(at, old.size(), by);
    return text;
}

double numberOf(const std::string& word) {
    char* end = nullptr;
    const double value = std::strtod(word.c_str(), &end);
    if (word.empty() || *end != '\0') throw std::invalid_argument("no number: " + word);
    return value;
}

}  // namespace doubles
