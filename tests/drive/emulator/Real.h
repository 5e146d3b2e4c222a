#pragma once

#include <dlfcn.h>

namespace zib::drive {

/// The function that this library stands in front of.
template <typename Function>
[[nodiscard]] Function* real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// Marks the current thread as being inside the emulator, whose own calls go straight to the real functions.
class Inside
{
public:
    Inside() { ++depth; }
    ~Inside() { --depth; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    [[nodiscard]] static bool already() { return depth > 0; }

private:
    static thread_local int depth;
};

} // namespace zib::drive
