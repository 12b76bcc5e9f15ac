#include "readers/nl_input.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "readers/read_error.hpp"

namespace norv {

namespace {

constexpr std::endian orderOf(NlInput::Form form) {
    return form == NlInput::Form::bigEndian ? std::endian::big : std::endian::little;
}

}  // namespace

template <class Number>
Number NlInput::fixed(const char* expected) {
    char bytes[sizeof(Number)];
    if (nbBytesLeft() < sizeof bytes) refuse(expected);
    std::memcpy(bytes, cursor_, sizeof bytes);
    cursor_ += sizeof bytes;
    if (orderOf(form_) != std::endian::native) std::reverse(bytes, bytes + sizeof bytes);
    Number value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template std::int32_t NlInput::fixed<std::int32_t>(const char*);
template std::int16_t NlInput::fixed<std::int16_t>(const char*);

double NlInput::number(const char* expected) {
    skipBlanks();
    const char* const place = cursor_;
    double value = 0.0;
    if (isText()) {
        const auto [stop, error] = std::from_chars(cursor_, end_, value);
        if (error != std::errc() || !atTokenEnd(stop)) refuse(expected);
        cursor_ = stop;
    } else {
        value = fixed<double>(expected);
    }
    if (std::isnan(value))
        refuseAt(static_cast<std::size_t>(place - begin_), "not-a-number", expected);
    return value;
}

double NlInput::finiteNumber(const char* expected) {
    skipBlanks();
    const std::size_t place = offset();
    const double value = number(expected);
    if (std::isinf(value)) refuseAt(place, "an infinite number", expected);
    return value;
}

std::string_view NlInput::word(const char* expected) {
    if (!isText()) return countedText(expected);
    if (atEnd()) refuse(expected);
    const char* const place = cursor_;
    while (!atTokenEnd(cursor_)) ++cursor_;
    return {place, static_cast<std::size_t>(cursor_ - place)};
}

std::string_view NlInput::countedText(const char* expected) {
    std::int32_t length = 0;
    if (isText()) {
        skipBlanks();
        const auto [stop, error] = std::from_chars(cursor_, end_, length);
        if (error != std::errc() || stop == end_ || *stop != ':') refuse(expected);
        cursor_ = stop + 1;
    } else {
        length = fixed<std::int32_t>(expected);
    }
    if (length < 0 || static_cast<std::size_t>(length) > nbBytesLeft()) refuse(expected);
    const std::string_view result(cursor_, static_cast<std::size_t>(length));
    cursor_ += length;
    return result;
}

std::string_view NlInput::restOfLine() {
    const char* const place = cursor_;
    const char* const lineEnd = std::find(cursor_, end_, '\n');
    cursor_ = lineEnd == end_ ? end_ : lineEnd + 1;
    const std::string_view line(place, static_cast<std::size_t>(lineEnd - place));
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

std::string NlInput::found() const {
    if (cursor_ == end_) return "the end of the file";
    if (!isText()) return "byte " + std::to_string(static_cast<unsigned char>(*cursor_));
    const char* stop = cursor_;
    while (!atTokenEnd(stop)) ++stop;
    return quoted({cursor_, static_cast<std::size_t>(stop - cursor_)});
}

void NlInput::refuse(const char* expected) const {
    refuseAt(offset(), found(), expected);
}

void NlInput::refuseRange(const char* place, std::int32_t value, std::int32_t first,
                          std::int32_t last, const char* expected) const {
    refuseAt(
        static_cast<std::size_t>(place - begin_), std::to_string(value),
        std::string(expected) + " from " + std::to_string(first) + " to " + std::to_string(last));
}

void NlInput::refuseAt(std::size_t offset, std::string_view found,
                       std::string_view expected) const {
    std::string message = "found ";
    message += found;
    message += ", expected ";
    message += expected;
    if (!isText()) throw ReadError(path_ + ": byte " + std::to_string(offset) + ": " + message);
    const std::string_view before(begin_, offset);
    const auto line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
    const std::size_t lineStart = before.rfind('\n');  // npos + 1 is 0
    throw ReadError(complaint(path_, {line, offset - (lineStart + 1) + 1}, message));
}

}  // namespace norv
