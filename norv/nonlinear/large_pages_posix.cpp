#include <sys/mman.h>

#include "nonlinear/large_vector.hpp"

namespace norv {

void preferLargePages(void* start, std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
    // A refusal leaves small pages, which are as good but slower.
    static_cast<void>(madvise(start, size, MADV_HUGEPAGE));
#else
    static_cast<void>(start);
    static_cast<void>(size);
#endif
}

}  // namespace norv
