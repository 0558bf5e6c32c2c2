#pragma once

#include "Error.h"

#include <utility>
#include <variant>

// Success with a value, or an Error. Passed across the event loop instead of exceptions.
template <typename T> class Result {
public:
    Result(T value)
        : m_state(std::in_place_index<0>, std::move(value))
    {
    }
    Result(Error error)
        : m_state(std::in_place_index<1>, std::move(error))
    {
    }

    bool ok() const { return m_state.index() == 0; }
    explicit operator bool() const { return ok(); }
    const T& value() const { return std::get<0>(m_state); }
    T& value() { return std::get<0>(m_state); }
    const Error& error() const { return std::get<1>(m_state); }

private:
    std::variant<T, Error> m_state;
};
