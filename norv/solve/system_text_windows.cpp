#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "norv/file_path.hpp"
#include "solve/system_text.hpp"

namespace norv {

std::string environmentVariable(const char* name) {
    const wchar_t* const value = _wgetenv(filePath(name).c_str());
    return value != nullptr ? fileName(value) : std::string();
}

std::istream& binaryStandardInput() {
    _setmode(_fileno(stdin), _O_BINARY);
    return std::cin;
}

}  // namespace norv
