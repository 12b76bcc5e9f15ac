#include "solve/log_writer.hpp"

#include <algorithm>
#include <utility>

namespace norv {

LineSplitter::LineSplitter(std::function<void(std::string_view)> receiver)
    : receiver_(std::move(receiver)) {}

void LineSplitter::write(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        openLine_ += text.substr(0, end);
        if (end == std::string_view::npos) return;
        receiver_(std::exchange(openLine_, {}));
        text.remove_prefix(end + 1);
    }
}

LogWriter::LogWriter(std::ostream& target, std::function<int()> width)
    : out_(target), columns_(std::move(width)), isTerminal_(columns_() > 0) {}

LogWriter::~LogWriter() {
    finishLine();
}

void LogWriter::write(std::string_view text) {
    if (!isTerminal_) {
        out_ << text;
        if (text.find('\n') != std::string_view::npos) out_.flush();
        return;
    }
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        openLine_ += text.substr(0, end);
        if (end == std::string_view::npos) return;
        writeLine(openLine_);
        openLine_.clear();
        text.remove_prefix(end + 1);
    }
}

void LogWriter::finishLine() {
    if (!openLine_.empty()) writeLine(std::exchange(openLine_, {}));
    if (nbPainted_ > 0) out_ << '\n';
    nbPainted_ = 0;
    out_.flush();
}

void LogWriter::writeLine(std::string_view line) {
    if (line.find(" || ") != std::string_view::npos) return repaint(line);
    if (nbPainted_ > 0) out_ << '\n';
    nbPainted_ = 0;
    out_ << line << '\n' << std::flush;
}

void LogWriter::repaint(std::string_view line) {
    // The last column stays free: some terminals begin a new line once it is written.
    const auto room = static_cast<std::size_t>(std::max(columns_() - 1, 1));
    line = line.substr(0, room);
    const std::size_t nbCovered = std::min(line.size(), nbPainted_);
    const std::string blanks(std::max(std::min(nbPainted_, room), nbCovered) - nbCovered, ' ');
    out_ << '\r' << line << blanks << std::flush;
    nbPainted_ = line.size();
}

}  // namespace norv
