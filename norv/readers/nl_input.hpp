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
        : path_(file.path()),
          begin_(file.text().data()),
          cursor_(begin_),
          end_(begin_ + file.text().size()) {}

    void setForm(Form newForm) noexcept { form_ = newForm; }
    [[nodiscard]] bool isText() const noexcept { return form_ == Form::text; }

    /// Bytes from the beginning of the file.
    [[nodiscard]] std::size_t offset() const noexcept {
        return static_cast<std::size_t>(cursor_ - begin_);
    }
    [[nodiscard]] std::size_t nbBytesLeft() const noexcept {
        return static_cast<std::size_t>(end_ - cursor_);
    }

    /// Is nothing left, blanks and comments of a text aside? Skips those.
    bool atEnd() {
        skipBlanks();
        return cursor_ == end_;
    }

    /// The next character: what kind of thing follows.
    char letter(const char* expected) {
        if (atEnd()) refuse(expected);
        return *cursor_++;
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
        const char* const place = cursor_;
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
        while (cursor_ != end_ && (isBlank(*cursor_) || *cursor_ == '#')) {
            if (*cursor_ == '#') {
                while (cursor_ != end_ && *cursor_ != '\n') ++cursor_;
            } else {
                ++cursor_;
            }
        }
    }
    [[nodiscard]] bool atTokenEnd(const char* place) const noexcept {
        return place == end_ || isBlank(*place) || *place == '#';
    }

    std::int32_t integerText(const char* expected) {
        skipBlanks();
        std::int32_t value = 0;
        const auto [stop, error] = std::from_chars(cursor_, end_, value);
        if (error != std::errc() || !atTokenEnd(stop)) refuse(expected);
        cursor_ = stop;
        return value;
    }

    template <class Number>
    Number fixed(const char* expected);
    [[nodiscard]] std::string found() const;
    [[noreturn]] void refuseRange(const char* place, std::int32_t value, std::int32_t first,
                                  std::int32_t last, const char* expected) const;

    const std::string& path_;
    const char* begin_;
    const char* cursor_;
    const char* end_;
    Form form_ = Form::text;
};

}  // namespace norv
