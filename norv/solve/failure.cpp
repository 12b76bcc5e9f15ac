#include "solve/failure.hpp"

#include <new>

#include "readers/read_error.hpp"

namespace norv {

Complaint currentComplaint() {
    const std::string speaker = "norvsolve: ";
    try {
        throw;
    } catch (const UnsupportedError& error) {
        return {ExitCode::unsupported, error.what(), ""};
    } catch (const ReadError& error) {
        // The line starts with file, line and column, as editors and users expect it.
        return {ExitCode::badInput, error.what(), ""};
    } catch (const Failure& failure) {
        return {failure.code(), failure.what(), speaker};
    } catch (const std::bad_alloc&) {
        return {ExitCode::failed, "memory exhausted", speaker};
    } catch (const std::exception& error) {
        return {ExitCode::failed, error.what(), speaker};
    }
}

}  // namespace norv
