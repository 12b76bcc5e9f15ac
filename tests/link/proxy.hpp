#pragma once

#include <stdexcept>
#include <string>

#include "host/doubles/proxy_control.hpp"
#include "host/library_loading.hpp"

namespace vex::test {

/// The controls of one proxy host library.
class Proxy {
public:
    /// Loads `stem`64 from `folder`.
    Proxy(const std::string& folder, const std::string& stem) {
        std::string reason;
        library_ = platformLoading().open(folder + "/" + stem + "64" + librarySuffix, reason);
        if (library_ == nullptr) throw std::runtime_error(reason);
    }

    void reset() const { find<proxy::ResetFunction>("proxyReset")(); }
    [[nodiscard]] std::int64_t nbCalls() const {
        return find<proxy::NbCallsFunction>("proxyNbCalls")();
    }
    void mark(std::int64_t call, proxy::Answer answer) const {
        find<proxy::MarkFunction>("proxyMark")(call, answer);
    }
    void mark(const char* name, proxy::Answer answer) const {
        find<proxy::MarkNamedFunction>("proxyMarkNamed")(name, answer);
    }
    /// The operation that was answered badly, or the empty text.
    [[nodiscard]] std::string spoiled() const {
        const char* name = find<proxy::SpoiledFunction>("proxySpoiled")();
        return name != nullptr ? name : "";
    }

private:
    template <class Function>
    [[nodiscard]] Function* find(const char* name) const {
        return reinterpret_cast<Function*>(platformLoading().find(library_, name));
    }

    LibraryHandle library_;
};

}  // namespace vex::test
