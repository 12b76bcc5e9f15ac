#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "readers/input_text.hpp"

namespace norv {

/// The tokens of an .nl file: letters, numbers and words, in text or in binary form. Each read
/// either gives what was asked for or throws ReadError with the place and what was there instead.
class NlInput {
public:
    enum class Form : std::uint8_t { text, littleEndian, bigEndian };

    /// Begins as text, for the header. @param file  outlives the input.
    explicit NlInput(const InputText& file)
        : path(file.path()),
          begin(file.text().data()),
          cursor(begin),
          end(begin + file.text().size()) {}

    void setForm(Form newForm) noexcept { form = newForm; }
    [[nodiscard]] bool isText() const noexcept { return form == Form::text; }

    /// Bytes from the beginning of the file.
    [[nodiscard]] std::size_t offset() const noexcept {
        return static_cast<std::size_t>(cursor - begin);
    }
    [[nodiscard]] std::size_t nbBytesLeft() const noexcept {
        return static_cast<std::size_t>(end - cursor);
    }

    /// Is nothing left, blanks and comments of a text aside? Skips those.
    bool atEnd() {
        skipBlanks();
        return cursor == end;
    }

    /// The next character: what kind of thing follows.
    char letter(const char* expected) {
        if (atEnd()) refuse(expected);
        return *cursor++;
    }

    std::int32_t integer(const char* expected) {
        return isText() ? integerText(expected) : fixed<std::int32_t>(expected);
    }
    std::int32_t shortInteger(const char* expected) {
        return isText() ? integerText(expected) : std::int32_t{fixed<std::int16_t>(expected)};
    }
    /// An integer from `first` to `last`.
    std::int32_t integerWithin(std::int32_t first, std::int32_t last, const char* expected) {
        skipBlanks();
        const char* const place = cursor;
        const std::int32_t value = integer(expected);
        if (value < first || value > last) refuseRange(place, value, first, last, expected);
        return value;
    }
    /// A count of things that take a byte at least: never more than the file has room for.
    std::int32_t count(std::int32_t first, const char* expected) {
        constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
        const std::size_t room = nbBytesLeft();
        return integerWithin(first, static_cast<std::int32_t>(room < most ? room : most), expected);
    }
    /// A number; infinities are numbers, not-a-number is none.
    double number(const char* expected);
    double finiteNumber(const char* expected);
    /// A word up to the next blank; in binary form, bytes after their count.
    std::string_view word(const char* expected);
    /// The bytes after a count and, in a text, a colon.
    std::string_view countedText(const char* expected);
    /// What is left of the line, without its end, which is taken too. For text.
    std::string_view restOfLine();

    /// Throws: found what stands at the cursor, expected this.
    [[noreturn]] void refuse(const char* expected) const;
    /// Throws: a complaint about the place `offset` bytes from the beginning.
    [[noreturn]] void refuseAt(std::size_t offset, std::string_view found,
                               std::string_view expected) const;

private:
    static bool isBlank(char c) noexcept { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }
    void skipBlanks() {
        if (!isText()) return;
        while (cursor != end && (isBlank(*cursor) || *cursor == '#')) {
            if (*cursor == '#') {
                while (cursor != end && *cursor != '\n') ++cursor;
            } else {
                ++cursor;
            }
        }
    }
    [[nodiscard]] bool atTokenEnd(const char* place) const noexcept {
        return place == end || isBlank(*place) || *place == '#';
    }

    std::int32_t integerText(const char* expected) {
        skipBlanks();
        std::int32_t value = 0;
        const auto [stop, error] = std::from_chars(cursor, end, value);
        if (error != std::errc() || !atTokenEnd(stop)) refuse(expected);
        cursor = stop;
        return value;
    }

    template <class Number>
    Number fixed(const char* expected);
    [[nodiscard]] std::string found() const;
    [[noreturn]] void refuseRange(const char* place, std::int32_t value, std::int32_t first,
                                  std::int32_t last, const char* expected) const;

    const std::string& path;
    const char* begin;
    const char* cursor;
    const char* end;
    Form form = Form::text;
};

}  // namespace norv
