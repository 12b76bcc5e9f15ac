#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "double/exchange.hpp"
#include "link/entry_points.hpp"

namespace doubles {

/// What entry points are called with unless the step has other words.
struct Handles {
    void* link = nullptr;
    vex::ModelHandle model = nullptr;
    vex::OptionHandle options = nullptr;
};

/// The arguments as the words say, and room for what is written.
class EntryCall {
public:
    EntryCall(const std::string& step, Handles& given) : words(split(step, ":")), handles(given) {}

    template <class Result, class... Arguments>
    std::string run(Result (*function)(Arguments...)) {
        std::tuple<Arguments...> arguments{};
        std::apply([&](auto&... argument) { (set(argument), ...); }, arguments);
        const auto call = [&] {
            const Holding inside(isInLink, true);
            return std::apply(function, arguments);
        };
        std::string outcome = words[0];
        if constexpr (std::is_void_v<Result>)
            call();
        else
            outcome += " = " + std::to_string(call());
        return outcome + written();
    }

private:
    static constexpr std::int32_t unwritten = -9;

    /// Goes on to the next word. @return whether the argument stays null.
    bool isNull() {
        word = next < words.size() ? words[next++] : "";
        return word == "null";
    }
    void set(void*& argument) { argument = handles.link; }
    void set(vex::ModelHandle& argument) { argument = handles.model; }
    void set(vex::OptionHandle& argument) { argument = handles.options; }
    void set(void**& argument) {
        argument = place = &handles.link;
        if (!isNull() && word == "stale") handles.link = this;
    }
    void set(std::int32_t& argument) { argument = isNull() || word.empty() ? 0 : std::stoi(word); }
    void set(std::int32_t*& argument) { argument = isNull() ? nullptr : &compatibility; }
    void set(const std::int32_t*& argument) {
        if (isNull()) return;
        for (const std::string& code : split(word, ",")) signature.push_back(std::stoi(code));
        argument = signature.data();
    }
    void set(double*& argument) { argument = isNull() ? nullptr : levels.data(); }
    void set(const char*& argument) { argument = isNull() ? nullptr : words[next - 1].c_str(); }
    void set(char*& argument) { argument = isNull() ? nullptr : message.data(); }
    void set(const unsigned char*& argument) {
        if (isNull()) return;
        name = static_cast<char>(word.size()) + word + "no terminator";
        argument = reinterpret_cast<const unsigned char*>(name.data());
    }
    void set(unsigned char*& argument) {
        argument = isNull() ? nullptr : reinterpret_cast<unsigned char*>(message.data());
    }

    std::string written() const {
        std::string text = place == nullptr ? "" : *place == nullptr ? " null" : " link";
        const std::string bytes = message.substr(0, message.find_last_not_of('#') + 1);
        if (!bytes.empty()) text += " " + doubles::quoted(bytes);
        for (const double level : levels) text += level == unwritten ? "" : " " + textOf(level);
        return compatibility == unwritten ? text : text + " " + std::to_string(compatibility);
    }

    const std::vector<std::string> words;
    Handles& handles;
    std::size_t next = 1;
    std::string word, name;
    std::vector<std::int32_t> signature;
    void** place = nullptr;
    std::string message = std::string(300, '#');
    std::vector<double> levels = std::vector<double>(9, unwritten);
    std::int32_t compatibility = unwritten;
};

/// Calls the entry point of `step`, NAME:ARGUMENT:…, where lists are separated by ','. Arguments
/// left out are the handles or places for what is written; "null" is a null pointer, and "stale" a
/// handle that is no link's.
/// @return "NAME = RESULT", then "link" or "null" for what the place for a link holds, all bytes
///         that were written to the message, its length byte in front, levels and compatibility.
/// @throws std::out_of_range for an unknown entry point.
inline std::string callEntryPoint(const std::string& step, Handles& handles) {
#define ENTRY_POINT(name, ...) {#name, [](EntryCall& call) { return call.run(&name); }},
    static const std::map<std::string, std::string (*)(EntryCall&)> entryPoints = {
#include "link/entry_points.inc"
    };
#undef ENTRY_POINT
    EntryCall call(step, handles);
    return entryPoints.at(step.substr(0, step.find(':')))(call);
}

}  // namespace doubles
