#pragma once

/// An operation by its slot number, whatever the compiler would call.
template <typename Function>
Function slot(const void* object, int number)
{
    return reinterpret_cast<Function>((*static_cast<void* const* const*>(object))[number]);
}
