#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace zib {

/// Why something could not be done. The kind decides what happens next; the detail only names the thing.
struct Failure
{
    enum class Kind
    {
        Cancelled,      ///< The user asked to stop; never reported as an error.
        NotFound,       ///< A file, folder, drive or printer that is not there.
        NoPermission,   ///< It exists but the account may not use it.
        Busy,           ///< Another program holds it.
        NoMedium,       ///< The drive is empty.
        WrongMedium,    ///< The disc cannot be used for this.
        MediumTooSmall, ///< The tracks do not fit.
        UnreadableFile, ///< The file cannot be read or is not what it claims to be.
        WriteFailed,    ///< Nothing more can be written: full disk, lost device.
        DeviceGone,     ///< The device went away in the middle.
        DeviceError,    ///< The device reported an error of its own.
        BadValue,       ///< A text or number that does not fit its field.
        Unsupported,    ///< The request is understood but cannot be served.
    };

    Kind kind;
    QString detail{};

    bool operator==(const Failure&) const = default;
};

/// A value, or the reason why there is none. Ignoring one does not compile without a warning.
template <typename T = void>
class [[nodiscard]] Outcome
{
public:
    Outcome(T value) : m_content(std::move(value)) {}
    Outcome(Failure failure) : m_content(std::move(failure)) {}

    explicit operator bool() const { return std::holds_alternative<T>(m_content); }
    /// The value; only after a test for success.
    const T& value() const& { return std::get<T>(m_content); }
    T&& value() && { return std::get<T>(std::move(m_content)); }
    const T& operator*() const { return value(); }
    const T* operator->() const { return &value(); }
    /// The failure; only after a test for failure.
    const Failure& error() const { return std::get<Failure>(m_content); }

private:
    std::variant<T, Failure> m_content;
};

/// Success without a value, or the reason of the failure.
template <>
class [[nodiscard]] Outcome<void>
{
public:
    Outcome() = default;
    Outcome(Failure failure) : m_failure(std::move(failure)) {}

    explicit operator bool() const { return !m_failure.has_value(); }
    /// The failure; only after a test for failure.
    const Failure& error() const { return *m_failure; }

private:
    std::optional<Failure> m_failure;
};

} // namespace zib
