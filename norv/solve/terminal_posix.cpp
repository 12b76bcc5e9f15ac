#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "solve/terminal.hpp"

namespace norv {

int terminalColumns(StandardStream stream) {
    constexpr int usualColumns = 80;
    const int descriptor = stream == StandardStream::output ? STDOUT_FILENO : STDERR_FILENO;
    if (isatty(descriptor) == 0) return 0;
    const char* const kind = std::getenv("TERM");
    if (kind != nullptr && std::string_view(kind) == "dumb") return 0;
    winsize size{};
    const bool isKnown = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : usualColumns;
}

bool terminalTakesColour(StandardStream stream) {
    const char* const refusal = std::getenv("NO_COLOR");
    return (refusal == nullptr || *refusal == '\0') && terminalColumns(stream) > 0;
}

}  // namespace norv
