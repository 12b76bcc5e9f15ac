#pragma once

#include <string>

#include "norv/options.hpp"
#include "readers/input_text.hpp"

namespace norv {

/// A plot of the search that is about to run: sees to it that the link writes a trace.
class PlotRequest {
public:
    /// Leaves the option "solvetrace" alone when it is set already, else names a temporary file,
    /// which goes with this object. Removes what an earlier run left in the file.
    /// Failure (badCommandLine) when the option cannot be set.
    explicit PlotRequest(Options& options);
    ~PlotRequest();
    PlotRequest(const PlotRequest&) = delete;
    PlotRequest& operator=(const PlotRequest&) = delete;

    /// Draws the trace, once the link has ended.
    /// Failure (outputFailed) when the link wrote none, or the picture cannot be written.
    void draw(const std::string& picturePath, const std::string& title) const;

private:
    std::string tracePath_;
    bool isTemporary_;
};

/// Draws a solve trace that exists already, titled with the instance it names or its own name.
/// Throws ReadError for faults in the trace, Failure (outputFailed) as above.
void drawTrace(const InputText& trace, const std::string& picturePath);

}  // namespace norv
