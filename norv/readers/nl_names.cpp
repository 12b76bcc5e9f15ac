#include "hostapi/codes.hpp"
#include "norv/file_path.hpp"
#include "readers/nl_reader.hpp"

namespace norv {

namespace {

/// Lines of a file without their ends; those too long for the host stay empty, so that the host
/// makes up a name.
std::vector<std::string> readLines(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(filePath(path), ignored)) return {};
    const InputText file = InputText::fromFile(path);
    std::vector<std::string> lines;
    std::string_view rest = file.text();
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.size() > static_cast<std::size_t>(hostapi::longestText)) line = {};
        lines.emplace_back(line);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return lines;
}

}  // namespace

NlNames readNlNames(const std::string& path) {
    std::string stub = path;
    for (const std::string_view ending : {".gz", ".nl"}) {
        if (stub.ends_with(ending)) stub.resize(stub.size() - ending.size());
    }
    return {readLines(stub + ".row"), readLines(stub + ".col")};
}

}  // namespace norv
