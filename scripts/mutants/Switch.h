// Stands before the text of every file that scripts/check-mutants has changed: asks which of the changes is
// alive.
#pragma once

/// True when the change of this number is the one alive in this process. Notes that the place was reached.
bool zibMutantAlive(int number) noexcept;

/// The same for code that may run while compiling; no change is alive there.
constexpr bool zibMutant(int number) noexcept
{
    return !__builtin_is_constant_evaluated() && zibMutantAlive(number);
}

/// A number of a table: it becomes whatever the table holds.
struct ZibMutantNumber
{
    long long value;
    template <typename T>
    operator T() const
    {
        return static_cast<T>(value);
    }
};
