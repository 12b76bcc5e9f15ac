#include "solve/search_watch.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <utility>

#include "norv/file_path.hpp"

namespace norv {
namespace {

double secondsBetween(SearchWatch::Clock::time_point from, SearchWatch::Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

/// The best value of the last whole line; nothing while that is "na".
std::optional<double> lastValue(std::string_view records) {
    const std::size_t end = records.rfind('\n');
    if (end == std::string_view::npos) return std::nullopt;
    records = records.substr(0, end);
    const std::size_t start = records.rfind('\n');
    const std::string_view line =
        start == std::string_view::npos ? records : records.substr(start + 1);
    std::size_t field = 0;
    for (int k = 0; k < 4 && field != std::string_view::npos; ++k)
        field = line.find(", ", field + 1);
    if (field == std::string_view::npos) return std::nullopt;
    double value = 0.0;
    const auto [stop, error] =
        std::from_chars(line.data() + field + 2, line.data() + line.size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

}  // namespace

SearchWatch::SearchWatch(Environment& environment, const SolveSettings& settings,
                         Clock::time_point start, std::string tracePath)
    : environment_(environment),
      settings_(settings),
      start_(start),
      searchStart_(Clock::now()),
      tracePath_(std::move(tracePath)),
      improvement_(searchStart_) {
    environment_.setPollHook([this] { poll(); });
}

SearchWatch::~SearchWatch() {
    environment_.setPollHook({});
}

void SearchWatch::seeLine(std::string_view line) {
    constexpr std::string_view notSupported = "not supported";
    if (line.find(notSupported) != std::string_view::npos) {
        refusal_ =
            line.substr(line.find(": ") == std::string_view::npos ? 0 : line.rfind(": ") + 2);
        while (refusal_.ends_with('.') || refusal_.ends_with('\n')) refusal_.pop_back();
    }
    if (line.starts_with("LocalSolver")) {
        std::string& place = introductions_[introductions_[0].empty() ? 0 : 1];
        if (place.empty()) place = line;
    }
    if (line.find(" || ") == std::string_view::npos) return;
    const double seconds = secondsBetween(searchStart_, Clock::now());
    if (auto infeasibility = infeasibilityIn(line)) {
        infeasibility->seconds = seconds;
        infeasible_.push_back(*infeasibility);
    }
    if (const auto bound = boundIn(line)) {
        bound_ = bound;
        bounds_.emplace_back(seconds, *bound);
    }
}

void SearchWatch::poll() {
    if (listener_) listener_();
    if (reason_ != StopReason::none) return;
    const Clock::time_point now = Clock::now();
    if (secondsBetween(start_, now) >= settings_.wallLimit) reason_ = StopReason::wallLimit;
    if (std::isfinite(settings_.stopAfter)) {
        followTrace();
        if (bestFound_ && secondsBetween(improvement_, now) >= settings_.stopAfter)
            reason_ = StopReason::noImprovement;
    }
    if (reason_ != StopReason::none) environment_.requestTermination();
}

void SearchWatch::followTrace() {
    std::ifstream in(filePath(tracePath_), std::ios::binary);
    in.seekg(static_cast<std::streamoff>(traceOffset_));
    const std::string fresh{std::istreambuf_iterator<char>(in), {}};
    const std::optional<double> value = lastValue(fresh);
    traceOffset_ += std::min(fresh.rfind('\n') + 1, fresh.size());
    if (!value || value == bestFound_) return;
    bestFound_ = value;
    improvement_ = Clock::now();
}

std::optional<Infeasibility> infeasibilityIn(std::string_view line) {
    const std::size_t end = line.find(" constraints violated");
    if (end == std::string_view::npos) return std::nullopt;
    line = line.substr(0, end);
    line.remove_prefix(line.rfind(", ") == std::string_view::npos ? 0 : line.rfind(", ") + 2);
    constexpr std::string_view between = " of ";
    const char* const last = line.data() + line.size();
    Infeasibility found;
    const auto violated = std::from_chars(line.data(), last, found.nbViolated);
    if (!std::string_view(violated.ptr, last).starts_with(between)) return std::nullopt;
    const auto all = std::from_chars(violated.ptr + between.size(), last, found.nbConstraints);
    const bool areNumbers = violated.ec == std::errc() && all.ec == std::errc();
    return areNumbers ? std::optional(found) : std::nullopt;
}

std::optional<double> boundIn(std::string_view line) {
    constexpr std::string_view word = "bound";
    const std::size_t at = line.find(word);
    if (at == std::string_view::npos) return std::nullopt;
    line.remove_prefix(at + word.size());
    line.remove_prefix(std::min(line.find_first_not_of(" :="), line.size()));
    double value = 0.0;
    const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), value);
    const bool isNumber = error == std::errc() && stop != line.data() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

}  // namespace norv
