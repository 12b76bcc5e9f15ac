#include "link/option_messages.hpp"

#include "host/operations.hpp"

namespace vex {

namespace {

bool isForTheUser(std::int32_t type) {
    return type <= 7 || type == 9;
}

}  // namespace

void echoMessages(NorvLocalSolver& link, MessageChoice choice) {
    nevStatCon(link.nev);
    // The count is asked again each time: writing a line may add messages.
    for (std::int32_t message = 1; message <= optMessageCount(link.opt); ++message) {
        std::int32_t type = 0;
        optGetMessage(link.opt, message, link.textBuf, &type);
        if (choice == MessageChoice::all || isForTheUser(type)) nevLogStat(link.nev, link.textBuf);
    }
    nevStatCoff(link.nev);
    optClearMessages(link.opt);
}

}  // namespace vex
