#pragma once

/// Names of the options that the link reads.

namespace vex {

/// Options of the link, typed by the option definition file. Read through `opt...Str`.
namespace option {
constexpr const char* aggrvars = "aggrvars";                ///< integer, on/off
constexpr const char* hierarchicalobj = "hierarchicalobj";  ///< integer, on/off
constexpr const char* dumpmodel = "dumpmodel";              ///< string, file name
constexpr const char* solvetrace = "solvetrace";            ///< string, file name; empty is off
constexpr const char* solvetracetime = "solvetracetime";    ///< double, seconds
constexpr const char* seed = "seed";                        ///< integer
constexpr const char* annealinglevel = "annealinglevel";    ///< integer
constexpr const char* logfreq = "logfreq";                  ///< integer, iterations
constexpr const char* dualbound = "dualbound";              ///< double
constexpr const char* writelsp = "writelsp";                ///< string, file name
}  // namespace option

/// The option definition file, looked for in the host's system directory.
constexpr const char* optionDefinitionFile = "optlocalsolver.def";

}  // namespace vex
