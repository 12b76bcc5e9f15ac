#include "solve/output_file.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "norv/file_path.hpp"
#include "solve/failure.hpp"

namespace norv {
namespace {

namespace fs = std::filesystem;

/// Something that is no file: a device, a pipe.
bool isSpecial(const std::string& path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(filePath(path), ignored);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

[[noreturn]] void refuse(const std::string& path, int error) {
    throw Failure(ExitCode::outputFailed,
                  path + ": cannot be written" +
                      (error != 0 ? std::string(": ") + std::strerror(error) : std::string()));
}

/// Why a stream has failed; it may have done so long ago, so it is asked once more.
int errorOf(std::ostream& out) {
    out.clear();
    errno = 0;
    out.put('\n').flush();
    return errno;
}

bool areSame(const std::string& a, const std::string& b) {
    if (a == b) return true;
    std::error_code ignored;
    const fs::path first = fs::weakly_canonical(filePath(a), ignored);
    const fs::path second = fs::weakly_canonical(filePath(b), ignored);
    return first == second || fs::equivalent(filePath(a), filePath(b), ignored);
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : path_(path),
      target_(path),
      isStandardOutput_(path == "-"),
      isDirect_(isStandardOutput_ || isSpecial(path)) {
    if (isStandardOutput_) return;
    std::error_code none;
    if (fs::is_directory(filePath(path), none)) refuse(path_, EISDIR);
    const fs::path real = fs::canonical(filePath(path), none);  // of what exists
    if (!isDirect_ && !none) target_ = fileName(real);
    open();
}

void OutputFile::open() {
    if (!isDirect_) beside_.emplace(uniquePath(target_ + ".part"));
    errno = 0;
    file_.open(filePath(isDirect_ ? path_ : beside_->path()), std::ios::binary);
    if (!file_) refuse(path_, errno);
}

std::ostream& OutputFile::stream() {
    if (isStandardOutput_) return std::cout;
    if (!file_.is_open()) open();
    return file_;
}

void OutputFile::finish() {
    if (isStandardOutput_) return requirePrinted();
    if (!file_.flush()) {
        const int error = errorOf(file_);
        file_.close();
        refuse(path_, error);
    }
    file_.close();
    if (!file_) refuse(path_, errno);
    if (!beside_) return;
    try {
        beside_->renameTo(target_);
    } catch (const fs::filesystem_error& error) {
        throw Failure(ExitCode::outputFailed,
                      path_ + ": cannot be written: " + error.code().message());
    }
}

void requireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs) {
    for (std::size_t k = 0; k < outputs.size(); ++k) {
        if (outputs[k].empty() || isSpecial(outputs[k])) continue;
        for (const std::string& input : inputs) {
            if (outputs[k] != "-" && !input.empty() && areSame(outputs[k], input))
                throw Failure(ExitCode::badInput,
                              outputs[k] + ": found as an input, expected another file to write");
        }
        for (std::size_t i = 0; i < k; ++i) {
            if (!outputs[i].empty() && areSame(outputs[i], outputs[k]))
                throw Failure(ExitCode::badInput,
                              outputs[k] + ": found as two outputs, expected one file for each");
        }
    }
}

void requirePrinted() {
    if (!std::cout.flush()) refuse("standard output", errorOf(std::cout));
}

}  // namespace norv
