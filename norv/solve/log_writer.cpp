#include "solve/log_writer.hpp"

#include <algorithm>
#include <utility>

namespace norv {

LogWriter::LogWriter(std::ostream& target, std::function<int()> width)
    : out(target), columns(std::move(width)), isTerminal(columns() > 0) {}

LogWriter::~LogWriter() {
    finishLine();
}

void LogWriter::write(std::string_view text) {
    if (!isTerminal) {
        out << text;
        if (text.find('\n') != std::string_view::npos) out.flush();
        return;
    }
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        openLine += text.substr(0, end);
        if (end == std::string_view::npos) return;
        writeLine(openLine);
        openLine.clear();
        text.remove_prefix(end + 1);
    }
}

void LogWriter::finishLine() {
    if (!openLine.empty()) writeLine(std::exchange(openLine, {}));
    if (nbPainted > 0) out << '\n';
    nbPainted = 0;
    out.flush();
}

void LogWriter::writeLine(std::string_view line) {
    if (line.find(" || ") != std::string_view::npos) return repaint(line);
    if (nbPainted > 0) out << '\n';
    nbPainted = 0;
    out << line << '\n' << std::flush;
}

void LogWriter::repaint(std::string_view line) {
    // The last column stays free: some terminals begin a new line once it is written.
    const auto room = static_cast<std::size_t>(std::max(columns() - 1, 1));
    line = line.substr(0, room);
    const std::size_t nbCovered = std::min(line.size(), nbPainted);
    const std::string blanks(std::max(std::min(nbPainted, room), nbCovered) - nbCovered, ' ');
    out << '\r' << line << blanks << std::flush;
    nbPainted = line.size();
}

}  // namespace norv
