// The audit object: turns a program's banner into the line that the host's files show.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

#include "hostapi/codes.hpp"
#include "hostapi/handles.hpp"
#include "interface/guarded.hpp"
#include "interface/library_check.hpp"
#include "interface/library_object.hpp"
#include "interface/text_result.hpp"
#include "norv/export.hpp"

namespace hostapi {

struct AuditRecord {
    std::string line;  ///< one line, without its end
};

static void reportFailure(const AuditRecord* /*audit*/, const char* operation,
                          const char* reason) noexcept {
    std::fprintf(stderr, "hubdclib64: %s: %s\n", operation, reason);
}

}  // namespace hostapi

#define NORV_DECLARE_OPERATIONS
#include "interface/declare_operations.hpp"
// The table comes last: it uses the macro.
#include "hostapi/hux_operations.inc"

using hostapi::AuditHandle;
using hostapi::AuditRecord;

namespace {

#define NORV_DESCRIBE_OPERATIONS
#include "interface/declare_operations.hpp"
constexpr norv::Operation operations[] = {
#include "hostapi/hux_operations.inc"
};
constexpr norv::Interface served = {"hubdclib64", "hux", hostapi::interface_version::hux,
                                    operations};

/// Who reads a log must see that this is not the closed host.
constexpr std::string_view hostMark = " [built-in host]";

}  // namespace

void ChuxSetAuditLine(AuditHandle audit, const char* line) {
    norv::guardedVoid(__func__, audit, [line](AuditRecord& record) {
        record.line = line == nullptr ? "" : line;
        std::replace_if(
            record.line.begin(), record.line.end(), [](char c) { return c == '\n' || c == '\r'; },
            ' ');
    });
}

char* ChuxGetAuditLine(AuditHandle audit, char* line, std::int32_t length) {
    if (line == nullptr || length < 1) return line;
    *line = '\0';
    return norv::guarded(__func__, audit, line, [line, length](AuditRecord& record) {
        return norv::writeText(line, static_cast<std::size_t>(length),
                               record.line + std::string(hostMark));
    });
}

NORV_LIBRARY_ENTRIES(huxXCreate, huxXFree, ChuxXCheck, ChuxXAPIVersion, AuditRecord, served)
