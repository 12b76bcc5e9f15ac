#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "readers/input_text.hpp"
#include "readers/read_error.hpp"

namespace norv {

/// A word of an .lp file.
struct LpToken {
    enum class Kind : std::uint8_t { end, number, name, sense, sign, symbol };
    Kind kind = Kind::end;
    std::string_view text;  ///< of a sense as in the file; of a symbol one of ^ * / [ ] : :: ->
    double value = 0.0;     ///< of a number
    Place place{};
    bool startsLine = false;

    [[nodiscard]] bool isSymbol(std::string_view symbol) const {
        return kind == Kind::symbol && text == symbol;
    }
    /// Is it that word, in small or capital letters?
    [[nodiscard]] bool isWord(std::string_view word) const;
};

/// Cuts an .lp file into words; what follows a backslash is a comment up to the line's end.
///
/// A name begins with neither digit nor dot and holds none of + - * ^ / < > = : \ and blanks.
/// Brackets are part of a name when they open and close in it ("x[1,2]"). A number ends where the
/// longest decimal number ends, so that "3x" is two words.
class LpLexer {
public:
    /// @param file  outlives this object and its tokens.
    explicit LpLexer(const InputText& file);

    [[nodiscard]] const LpToken& current() const { return current_; }
    /// The word after the current one.
    [[nodiscard]] const LpToken& next() const { return next_; }
    void advance();

    /// Throws ReadError: "file:line:column: found ..., expected ...".
    [[noreturn]] void refuse(const LpToken& token, const std::string& expected) const;
    [[nodiscard]] std::string place(const LpToken& token, const std::string& message) const;

private:
    LpToken scan();
    void skipBlanks();
    LpToken scanNumber(LpToken token);
    LpToken take(LpToken token, LpToken::Kind kind, std::size_t length);

    const std::string& path_;
    std::string_view text_;
    std::size_t offset_ = 0;
    std::size_t line_ = 1;
    std::size_t lineStart_ = 0;
    bool startsLine_ = true;
    LpToken current_;
    LpToken next_;
};

}  // namespace norv
