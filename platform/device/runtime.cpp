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

// The headers turn InterlockedIncrement and InterlockedDecrement into these, which the processor has no
// instruction for; the system's export does the same. GCC keeps the names for itself.
extern "C" long InterlockedExchangeAdd(long volatile* value, long change);
extern "C" long AddAndFetch(long volatile* value, long change) __asm__("__sync_add_and_fetch_4");
extern "C" long SubtractAndFetch(long volatile* value, long change) __asm__("__sync_sub_and_fetch_4");

long AddAndFetch(long volatile* value, long change) {
    return InterlockedExchangeAdd(value, change) + change;
}

long SubtractAndFetch(long volatile* value, long change) {
    return InterlockedExchangeAdd(value, -change) - change;
}
