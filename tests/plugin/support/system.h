// The system around the plug-in, as a test wants it: the time of day, and the file that says whether there is a model.
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

/// Whether stat() finds the model that the plug-in looks for; at first it does, whatever the system has.
void let_model_be(bool present);

} // namespace test
