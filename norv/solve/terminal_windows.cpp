#include <windows.h>

#include "solve/terminal.hpp"

namespace norv {

int terminalColumns(StandardStream stream) {
    const HANDLE console =
        GetStdHandle(stream == StandardStream::output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO info;
    // A file or a pipe is no console and is refused.
    if (GetConsoleScreenBufferInfo(console, &info) == 0) return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool terminalTakesColour(StandardStream) {
    return false;  // older consoles print the codes
}

}  // namespace norv
