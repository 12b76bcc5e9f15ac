#include "readers/lp_lexer.hpp"

#include <algorithm>
#include <utility>

#include "interface/names.hpp"
#include "readers/number_text.hpp"

namespace norv {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
}
bool isNameCharacter(char c) {
    constexpr std::string_view others = "+-*^/<>=:\\[]\n";
    return !isBlank(c) && others.find(c) == std::string_view::npos &&
           (static_cast<unsigned char>(c) > 0x20) && c != 0x7f;
}

/// Length of the decimal number at the front.
std::size_t numberLength(std::string_view text) {
    std::size_t length = 0;
    const auto skipDigits = [&] {
        while (length < text.size() && isDigit(text[length])) ++length;
    };
    skipDigits();
    if (length < text.size() && text[length] == '.') ++length;
    skipDigits();
    std::size_t exponent = length;
    if (exponent >= text.size() || (text[exponent] != 'e' && text[exponent] != 'E')) return length;
    ++exponent;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    if (exponent >= text.size() || !isDigit(text[exponent])) return length;
    length = exponent;
    skipDigits();
    return length;
}

/// Length of the name at the front, with brackets that it opens and closes.
std::size_t nameLength(std::string_view text) {
    std::size_t length = 0;
    std::size_t nbOpen = 0;
    for (; length < text.size(); ++length) {
        const char c = text[length];
        if (c == '[' && length > 0 && text.find(']', length) < text.find_first_of(" \n", length)) {
            ++nbOpen;
        } else if (c == ']' && nbOpen > 0) {
            --nbOpen;
        } else if (!isNameCharacter(c)) {
            break;
        }
    }
    return length;
}

}  // namespace

bool LpToken::isWord(std::string_view word) const {
    return kind == Kind::name && sameName(text, word);
}

LpLexer::LpLexer(const InputText& file) : path_(file.path()), text_(file.text()) {
    if (text_.starts_with("\xEF\xBB\xBF")) offset_ = lineStart_ = 3;
    current_ = scan();
    next_ = scan();
}

void LpLexer::advance() {
    current_ = next_;
    next_ = scan();
}

void LpLexer::refuse(const LpToken& token, const std::string& expected) const {
    const std::string found =
        token.kind == LpToken::Kind::end ? "the end of the file" : quoted(token.text);
    throw ReadError(place(token, "found " + found + ", expected " + expected));
}

std::string LpLexer::place(const LpToken& token, const std::string& message) const {
    return complaint(path_, token.place, message);
}

void LpLexer::skipBlanks() {
    for (; offset_ < text_.size(); ++offset_) {
        const char c = text_[offset_];
        if (c == '\n') {
            ++line_;
            lineStart_ = offset_ + 1;
            startsLine_ = true;
        } else if (c == '\\') {
            offset_ = std::min(text_.find('\n', offset_), text_.size()) - 1;
        } else if (!isBlank(c)) {
            return;
        }
    }
}

LpToken LpLexer::take(LpToken token, LpToken::Kind kind, std::size_t length) {
    token.kind = kind;
    token.text = text_.substr(offset_, length);
    offset_ += length;
    return token;
}

LpToken LpLexer::scanNumber(LpToken token) {
    token = take(token, LpToken::Kind::number, numberLength(text_.substr(offset_)));
    const NumberText number = parseNumber(token.text);
    if (number.fault != NumberFault::none) refuse(token, "a number within double precision");
    token.value = number.value;
    return token;
}

LpToken LpLexer::scan() {
    skipBlanks();
    LpToken token;
    token.place = {line_, offset_ - lineStart_ + 1};
    token.startsLine = std::exchange(startsLine_, false);
    if (offset_ == text_.size()) return token;
    const std::string_view rest = text_.substr(offset_);
    const char c = rest[0];
    const bool isNumber = isDigit(c) || (c == '.' && rest.size() > 1 && isDigit(rest[1]));
    if (isNumber) return scanNumber(token);
    if (c == '<' || c == '>' || c == '=') {
        const bool isDouble = rest.size() > 1 && std::string_view("<>=").find(rest[1]) <= 2;
        return take(token, LpToken::Kind::sense, isDouble ? 2 : 1);
    }
    if (rest.starts_with("->") || rest.starts_with("::"))
        return take(token, LpToken::Kind::symbol, 2);
    if (c == '+' || c == '-') return take(token, LpToken::Kind::sign, 1);
    if (std::string_view("^*/[]:").find(c) != std::string_view::npos)
        return take(token, LpToken::Kind::symbol, 1);
    const std::size_t length = nameLength(rest);
    if (length > 0) return take(token, LpToken::Kind::name, length);
    refuse(take(token, LpToken::Kind::symbol, 1), "a character that belongs into an .lp file");
}

}  // namespace norv
