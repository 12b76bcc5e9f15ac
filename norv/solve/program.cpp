#include "solve/program.hpp"

#include <iostream>

#include "solve/ampl/command.hpp"
#include "solve/command_line.hpp"
#include "solve/failure.hpp"
#include "solve/solve_command.hpp"

namespace norv {

int runProgram(int argc, const char* const* argv) {
    try {
        if (const auto command = parseAmplCommand(argc, argv))
            return static_cast<int>(runAmplCommand(*command));
        const ParsedArguments arguments = parseArguments(argc, argv);
        if (!arguments.commandLine) return arguments.exitCode;
        return static_cast<int>(runSolveCommand(*arguments.commandLine));
    } catch (...) {
        const Complaint complaint = currentComplaint();
        std::cout.flush();
        std::cerr << complaint.line();
        return static_cast<int>(complaint.code);
    }
}

}  // namespace norv
