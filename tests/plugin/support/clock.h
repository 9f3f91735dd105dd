// The time of day as the plug-in asks for it, standing still where a test wants that.
#pragma once

#include <string>

namespace test
{

/// While this lives, gettimeofday() gives `seconds` since 1970; an empty text leaves the clock alone.
class Clock
{
public:
    explicit Clock(const std::string &seconds);
    ~Clock();
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;
};

} // namespace test
