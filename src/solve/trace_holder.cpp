#include "solve/trace_holder.hpp"

#include "host/operations.hpp"
#include "host/option_names.hpp"

namespace vex {

std::int32_t TraceHolder::openOnRequest() {
    link.textBuf[0] = '\0';
    const char* fileName = optGetStrStr(link.opt, option::solvetrace, link.textBuf);
    if (fileName == nullptr || *fileName == '\0') return 0;
    SolveTrace::Subject subject;
    subject.fileName = fileName;
    subject.solverId = "LocalSolver";
    subject.optionFile = nmoOptFile(link.nmo);
    subject.infinity = nmoPinf(link.nmo);
    subject.timeInterval = optGetDblStr(link.opt, option::solvetracetime);
    const std::int32_t failure = SolveTrace::create(trace, subject);
    if (failure != 0) nevLogStatPChar(link.nev, "ERROR: Could not create solvetrace file.\n");
    link.trace = trace.get();
    return failure;
}

void TraceHolder::close() {
    link.trace = nullptr;
    SolveTrace::close(trace);
}

double worstValue(const NorvLocalSolver& link) {
    return nmoSense(link.nmo) == objective_sense::minimise ? nmoPinf(link.nmo) : -nmoPinf(link.nmo);
}

}  // namespace vex
