#include "norv/environment.hpp"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "environment/environment_record.hpp"

namespace norv {

namespace {

bool endsWithSeparator(std::string_view directory) {
    constexpr auto platformSeparator =
        static_cast<char>(std::filesystem::path::preferred_separator);
    return directory.ends_with('/') || directory.ends_with(platformSeparator);
}

}  // namespace

Environment::Environment() : record_(std::make_unique<hostapi::EnvironmentRecord>()) {}
Environment::~Environment() = default;
Environment::Environment(Environment&&) noexcept = default;
Environment& Environment::operator=(Environment&&) noexcept = default;

void Environment::setLogSink(Sink sink) {
    record_->logSink = std::move(sink);
}

void Environment::setStatusSink(Sink sink) {
    record_->statusSink = std::move(sink);
}

void Environment::setPollHook(std::function<void()> hook) {
    record_->pollHook = std::move(hook);
}

void Environment::setSystemDirectory(std::string_view directory) {
    std::string complete(directory);
    if (!complete.empty() && !endsWithSeparator(complete)) complete += '/';
    if (complete.size() > static_cast<std::size_t>(hostapi::longestText)) {
        throw std::length_error("the system directory has more than 255 characters: " + complete);
    }
    record_->systemDirectory = std::move(complete);
}

void Environment::setTimeLimit(double seconds) {
    if (std::isnan(seconds) || seconds < 0.0)
        throw std::invalid_argument("the time limit must be 0 or more seconds");
    record_->timeLimit = seconds;
}

void Environment::setIterationLimit(std::int32_t iterations) {
    if (iterations < 0) throw std::invalid_argument("the iteration limit must be 0 or more");
    record_->iterationLimit = iterations;
}

void Environment::setThreads(std::int32_t threads) {
    if (threads < 1) throw std::invalid_argument("the number of threads must be 1 or more");
    record_->nbThreads = threads;
}

void Environment::requestTermination() noexcept {
    static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets the flag");
    record_->terminationRequested.store(true, std::memory_order_relaxed);
}

void Environment::clearTermination() noexcept {
    record_->terminationRequested.store(false, std::memory_order_relaxed);
}

hostapi::EnvironmentHandle Environment::handle() const noexcept {
    return record_.get();
}

void writeLog(const hostapi::EnvironmentRecord& environment, std::string_view text) {
    if (environment.logSink) environment.logSink(text);
    if (environment.echoesLog) writeStatus(environment, text);
}

void writeStatus(const hostapi::EnvironmentRecord& environment, std::string_view text) {
    if (environment.statusSink) environment.statusSink(text);
}

void writeLogAndStatus(const hostapi::EnvironmentRecord& environment, std::string_view text) {
    if (environment.logSink) environment.logSink(text);
    writeStatus(environment, text);
}

}  // namespace norv

namespace hostapi {

void reportFailure(const EnvironmentRecord* environment, const char* operation,
                   const char* reason) noexcept {
    try {
        const std::string line = std::string("hubdclib64: ") + operation + ": " + reason + "\n";
        if (environment != nullptr && environment->logSink) {
            environment->logSink(line);
            return;
        }
    } catch (...) {  // the log itself fails: the standard error stream is what is left
    }
    std::fprintf(stderr, "hubdclib64: %s: %s\n", operation, reason);
}

}  // namespace hostapi
