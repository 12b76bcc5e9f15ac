#pragma once

#include <functional>
#include <string>
#include <vector>

/// Whole calls of the link's entry points as text, between the doubles of host and optimizer.
///
/// A case is a list of statements, separated by ';' or on lines of their own. Those of an instance
/// (instance_text.hpp) and, in any order:
///   setup | solve | whole    which calls are shown: of model setup with the model built, and what
///                            differs by value (model_text.hpp); of the solve; all that change
///                            something. At first setup.
///   do STEP…                 in place of "ready" (setup) and of "ready solve" for each search:
///                            steps ready, solve; throws: model setup alone, the exception that
///                            leaves it; bind:PREFIX[:ROOM], load:PREFIX[:ROOM]: a fresh
///                            binding of that interface, made ready or loaded, and what it says;
///                            entry points (entry_call.hpp); starve: the next allocation fails
///   show PATTERN… | hide PATTERN…   more calls to show, or not; "name" or "beginning*", the last
///                            that fits counts; without ls_close a model is shown by its size alone
///   option NAME VALUE | NAME VALUE…   lines of the option file; $tmp stands for a folder of its
///                            own, whose files dump and trace are shown at the end
///   own                      the host hands over no option object
///   level NAME VALUE…        the variables' levels before
///   answer CALL = ANSWER | CALL = ANSWER…   what calls answer (Exchange::answer)
///   search WORD… | WORD…     what one search does after the other (setSearches); at first one
///                            that sees its phase end

namespace doubles {

/// Runs a case on a link object of its own, after `beforehand`. @return its calls as text.
/// @throws std::invalid_argument for a line that cannot be read.
std::string runCase(
    const std::vector<std::string>& lines, const std::function<void()>& beforehand = [] {});

}  // namespace doubles
