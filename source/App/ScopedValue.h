#pragma once
#include <utility>

/** Gives a variable another value for the length of a scope. */
template <class T>
class ScopedValue {
public:
    ScopedValue(T& variable, T value) : i_variable(variable), i_before(std::exchange(variable, std::move(value))) {}
    ~ScopedValue() { i_variable = std::move(i_before); }
    ScopedValue(const ScopedValue&) = delete;
    ScopedValue& operator=(const ScopedValue&) = delete;

private:
    T& i_variable;
    T i_before;
};
