#include "solve/program.hpp"

int main(int argc, char** argv) {
    return norv::runProgram(argc, argv);
}
