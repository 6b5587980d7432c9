// What the compiler's own runtime library, which the device does not have, would define for the program's
// objects.
#include <cstdlib>
#include <new>

extern "C" void _purecall();  // the system's own answer to the same mistake

const std::nothrow_t std::nothrow{};

extern "C" void __cxa_pure_virtual();
extern "C" void __cxa_pure_virtual() {
    _purecall();
}

// string_view::substr starts past the end: a mistake in the program, which stops here instead of throwing.
namespace std {
[[noreturn]] void __throw_out_of_range_fmt(const char*, ...);
void __throw_out_of_range_fmt(const char*, ...) {
    __builtin_trap();
}
}  // namespace std
