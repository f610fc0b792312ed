#pragma once

// Runs the body of an exported function so that no exception crosses the C interface; a
// failure inside is just "not found".

template <class F> auto Guarded(F&& body) noexcept -> decltype(body())
{
    try {
        return body();
    } catch (...) {
        return 0;
    }
}
