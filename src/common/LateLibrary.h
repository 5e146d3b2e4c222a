#pragma once

#include <QString>
#include <QtGlobal>

#include <atomic>
#include <mutex>

namespace zib {

/// A library of the system that is loaded when something of it is needed first, so that the program's start
/// does not wait for it. Once loaded it stays. From any thread.
class LateLibrary
{
public:
    /// @param file its name as the linker would note it, version included: "libcups.so.2".
    constexpr explicit LateLibrary(const char* file) : m_file(file) {}
    Q_DISABLE_COPY_MOVE(LateLibrary)

    /// Loads it, unless that was done.  @returns false when it is not there or is damaged.
    bool load();
    /// Why it could not be loaded, as a sentence for the user; empty when it could.
    QString trouble();
    /// The function of that name; nullptr when it has none or cannot be loaded.
    void* find(const char* function);

private:
    const char* const m_file;
    std::once_flag m_once;
    void* m_handle = nullptr;
    const char* m_why = nullptr; ///< The loader's words.
};

/// A C function of a late library, called like the function itself. Where the library or the function is
/// missing, it does nothing and returns zero: ask the library before.
template <typename Function>
class LateFunction;

template <typename Result, typename... Arguments>
class LateFunction<Result (*)(Arguments...)>
{
public:
    using Pointer = Result (*)(Arguments...);

    constexpr LateFunction(LateLibrary& library, const char* name) : m_library(library), m_name(name) {}
    Q_DISABLE_COPY_MOVE(LateFunction)

    Result operator()(Arguments... arguments) const
    {
        if (const Pointer function = address())
            return function(arguments...);
        return Result();
    }
    /// @returns nullptr when the library lacks it.
    Pointer address() const
    {
        Pointer function = m_address.load(std::memory_order_acquire);
        if (!function) {
            function = reinterpret_cast<Pointer>(m_library.find(m_name));
            m_address.store(function, std::memory_order_release);
        }
        return function;
    }

private:
    LateLibrary& m_library;
    const char* const m_name;
    mutable std::atomic<Pointer> m_address = nullptr;
};

} // namespace zib

/// Lets code of the namespace where it stands call a C function by its own name out of a late library.
#define ZIB_LATE_FUNCTION(library, name)                                                                     \
    inline constinit const zib::LateFunction<decltype(&::name)> name(library, #name)
