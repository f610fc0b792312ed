#pragma once

// What the main dialog and every option page do with the run's options: show them when the page
// becomes active, and write them back when the user leaves it.

class OptionPage
{
public:
    virtual ~OptionPage() = default;
    virtual void LoadOptions() = 0;
    virtual void UpdateOptions() = 0;
};
