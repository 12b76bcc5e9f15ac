#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace norv {

/// Cuts a text that comes in pieces into lines.
class LineSplitter {
public:
    /// @param receiver  is called with each line, without its end.
    explicit LineSplitter(std::function<void(std::string_view)> receiver);
    void write(std::string_view text);

private:
    std::function<void(std::string_view)> receiver_;
    std::string openLine_;
};

/// Brings the log to its reader. A file or pipe gets the text as it is, flushed line by line. On a
/// terminal the progress lines (those with " || " in them) take turns on one line, cut to the
/// terminal's width; whatever else is logged leaves the last of them standing and goes below it.
class LogWriter {
public:
    /// @param out      outlives this object; nobody else writes to it between `write` and
    ///                 `finishLine`.
    /// @param columns  the terminal's width at the moment; 0 at construction: no terminal.
    LogWriter(std::ostream& out, std::function<int()> columns);
    ~LogWriter();
    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

    /// Text in pieces of any size, line ends included.
    void write(std::string_view text);
    /// Ends a line that is still open or repainted, so that others may write.
    void finishLine();

private:
    void writeLine(std::string_view line);
    void repaint(std::string_view line);

    std::ostream& out_;
    std::function<int()> columns_;
    bool isTerminal_;
    std::string openLine_;       ///< on a terminal: what came since the last line end
    std::size_t nbPainted_ = 0;  ///< characters of the progress line that stands, 0: none does
};

}  // namespace norv
