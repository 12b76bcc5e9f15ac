/// norvsolve: reads a model file, has the link solve it as the host would, and checks the result.

#include <iostream>

#include "solve/ampl/command.hpp"
#include "solve/command_line.hpp"
#include "solve/failure.hpp"
#include "solve/solve_command.hpp"

int main(int argc, char** argv) {
    try {
        if (const auto command = norv::parseAmplCommand(argc, argv))
            return static_cast<int>(norv::runAmplCommand(*command));
        const norv::ParsedArguments arguments = norv::parseArguments(argc, argv);
        if (!arguments.commandLine) return arguments.exitCode;
        return static_cast<int>(norv::runSolveCommand(*arguments.commandLine));
    } catch (...) {
        const norv::Complaint complaint = norv::currentComplaint();
        std::cout.flush();
        std::cerr << complaint.line();
        return static_cast<int>(complaint.code);
    }
}
