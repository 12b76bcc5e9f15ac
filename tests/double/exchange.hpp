#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the doubles of the host and of the optimizer have in common: one record of all calls and
/// one script of answers. Both doubles stand for functions that are one per process, so there is
/// one of these.

namespace doubles {

/// How a spoiled call goes wrong.
enum class Fault { none, low, high, thrown };

class Exchange {
public:
    /// Forgets calls, answers and faults; starts counting at 0. Nothing is recorded until asked.
    void reset() { *this = {}; }

    /// Receives every call when it is over: name, arguments, " = result" or "".
    using Listener = std::function<void(const std::string& name, const std::string& arguments,
                                        const std::string& result)>;
    void listen(Listener listener) { listeners.push_back(std::move(listener)); }
    void stopListening() { listeners.clear(); }
    [[nodiscard]] bool isListening() const { return !listeners.empty(); }
    void tell(const std::string& name, const std::string& arguments, const std::string& result) {
        for (const Listener& listener : listeners) listener(name, arguments, result);
    }

    /// Call `key`, "name" or "name(arguments)", is no longer forwarded. `values`: what it answers,
    /// split by " then " for one call after the other, the last one for good. One answer: the
    /// result, then what goes through each output argument, separated by ','. Numbers, texts,
    /// "null", "real" (forwarded after all), "throw CODE" (an error of the optimizer, without texts
    /// for -CODE), "throw standard" and "throw other".
    void answer(const std::string& key, const std::string& values);
    /// The answer to this call; null: forward it.
    [[nodiscard]] const std::string* answerTo(const std::string& name,
                                              const std::string& arguments);

    /// The k-th call from now on that `Fault` suits goes wrong. `mayFail` tells which can.
    void spoil(std::int64_t call, Fault fault);
    /// Counts a call. @return how it goes wrong.
    [[nodiscard]] Fault faultOf(const std::string& name, bool mayFail);
    [[nodiscard]] std::int64_t nbCalls() const { return nbCounted; }
    [[nodiscard]] bool hasAnswers() const { return !answers.empty(); }
    /// The function whose call was spoiled, or the empty text.
    [[nodiscard]] const std::string& spoiled() const { return spoiledName; }

    bool isSilent = false;

private:
    std::vector<Listener> listeners;
    /// By key, and the position of the next one.
    std::map<std::string, std::pair<std::vector<std::string>, std::size_t>> answers;
    std::int64_t nbCounted = 0;
    std::int64_t spoiledCall = 0;  // 0: none
    Fault spoiledFault = Fault::none;
    std::string spoiledName;
};

Exchange& exchange();

/// Whether this thread is in the link's own code: in an entry point, in no double.
extern thread_local bool isInLink;
/// The allocation of the link's own code that fails next, counted from 1; 0: none. For this every
/// program with doubles has an allocation of its own.
extern thread_local int failingAllocation;

/// For the scope's time `flag` is `value`.
class Holding {
public:
    Holding(bool& held, bool value) : flag(held), before(held) { flag = value; }
    ~Holding() { flag = before; }
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;

private:
    bool& flag;
    const bool before;
};

/// For the scope's time calls go through untouched: neither recorded nor answered nor spoiled.
struct Silence : Holding {
    Silence() : Holding(exchange().isSilent, true) {}
};

/// One call that a double answers: by `real(arguments...)` unless the script says otherwise.
template <class Result, class Real, class... Arguments>
Result respond(const char* name, bool mayFail, Real&& real, Arguments... arguments);

/// A function of the built-in host or of the engine, which no program with doubles is linked with.
/// @throws std::runtime_error naming what cannot be found.
void (*realFunction(const std::string& symbol))();

/// A piece of `text` between separators, blanks around it dropped.
std::vector<std::string> split(std::string_view text, std::string_view separator);
/// `text` with `by` in every place of `old`.
std::string replaced(std::string text, std::string_view old, std::string_view by);
/// Also "inf", "-inf" and "nan". @throws std::invalid_argument naming what is no number.
double numberOf(const std::string& word);

}  // namespace doubles

#include "double/respond.hpp"
