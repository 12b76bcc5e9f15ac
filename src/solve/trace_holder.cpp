#include "solve/trace_holder.hpp"

#include "host/operations.hpp"
#include "host/option_names.hpp"

namespace vex {

std::int32_t TraceHolder::openOnRequest() {
    link_.textBuf[0] = '\0';
    const char* fileName = optGetStrStr(link_.opt, option::solvetrace, link_.textBuf);
    if (fileName == nullptr || *fileName == '\0') return 0;
    SolveTrace::Subject subject;
    subject.fileName = fileName;
    subject.solverId = "LocalSolver";
    subject.optionFile = nmoOptFile(link_.nmo);
    subject.infinity = nmoPinf(link_.nmo);
    subject.timeInterval = optGetDblStr(link_.opt, option::solvetracetime);
    const std::int32_t failure = SolveTrace::create(trace_, subject);
    if (failure != 0) nevLogStatPChar(link_.nev, "ERROR: Could not create solvetrace file.\n");
    link_.trace = trace_.get();
    return failure;
}

void TraceHolder::close() {
    link_.trace = nullptr;
    SolveTrace::close(trace_);
}

double worstValue(const NorvLocalSolver& link) {
    return nmoSense(link.nmo) == objective_sense::minimise ? nmoPinf(link.nmo) : -nmoPinf(link.nmo);
}

}  // namespace vex
