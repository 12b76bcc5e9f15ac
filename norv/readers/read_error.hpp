#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norv {

/// Input that cannot be read: one line "file:line:column: what was found, what was expected", or
/// "file: reason" when no place in the file is to blame.
class ReadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Input that is well-formed and asks for something that this host does not have.
class UnsupportedError : public ReadError {
public:
    using ReadError::ReadError;
};

/// A place in a text file, both counted from 1; the column counts bytes.
struct Place {
    std::size_t line;
    std::size_t column;
};

/// "file:line:column: message": the form of every complaint about a file, errors and warnings.
std::string complaint(const std::string& path, Place place, std::string_view message);

/// `text` in double quotes for a message: cut after 60 bytes, bytes outside printable ASCII as
/// \xNN.
std::string quoted(std::string_view text);

}  // namespace norv
