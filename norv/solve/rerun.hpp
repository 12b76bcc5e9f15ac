#pragma once

#include <memory>
#include <string>

#include "solve/run.hpp"
#include "solve/settings/command_line.hpp"

namespace norv {

/// A run that is to be repeated, from its JSON result.
class Rerun {
public:
    /// Throws ReadError when the file is no such result.
    explicit Rerun(const std::string& path);
    ~Rerun();
    Rerun(const Rerun&) = delete;
    Rerun& operator=(const Rerun&) = delete;

    /// Puts the settings that the run was made with in front of those of the request, but those
    /// about outputs, and its model where the request names none.
    void addTo(Request& request) const;

    /// "the same answer", or the first difference.
    [[nodiscard]] std::string compare(const RunRecord& run) const;

private:
    struct Result;
    std::string path_;
    std::unique_ptr<Result> result_;
};

}  // namespace norv
