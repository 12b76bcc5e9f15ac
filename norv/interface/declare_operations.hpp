// declare_operations.hpp: how the libraries turn an operation table into declarations and records.
//
// No include guard: define one of NORV_DECLARE_OPERATIONS and NORV_DESCRIBE_OPERATIONS, include
// this file, include the table. A definition that differs from its line in the table conflicts
// with the declaration made here and does not compile.

#undef HOST_OPERATION
#undef NORV_SYMBOL_plain
#undef NORV_SYMBOL_text

#if defined(NORV_DECLARE_OPERATIONS)
#define NORV_SYMBOL_plain(name) name
#define NORV_SYMBOL_text(name) C##name
#define HOST_OPERATION(name, form, ...) \
    extern "C" NORV_API std::type_identity_t<__VA_ARGS__> NORV_SYMBOL_##form(name);
#elif defined(NORV_DESCRIBE_OPERATIONS)
#define HOST_OPERATION(name, form, ...) norv::describe<__VA_ARGS__>(#name),
#endif

#undef NORV_DECLARE_OPERATIONS
#undef NORV_DESCRIBE_OPERATIONS
