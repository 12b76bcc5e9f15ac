#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

#include "solve/program.hpp"

namespace {

/// Linear programs are set up and thrown away thousands of times a second; by default the system
/// gets their pages back each time, and clears them for the next one. The process lives for one
/// solve: it keeps them.
void keepFreedMemory() {
#if defined(M_TRIM_THRESHOLD)
    constexpr int mostKept = 256 << 20;
    constexpr int step = 4 << 20;
    mallopt(M_TRIM_THRESHOLD, mostKept);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TOP_PAD, step);
#endif
}

}  // namespace

int main(int argc, char** argv) {
    keepFreedMemory();
    return norv::runProgram(argc, argv);
}
