#pragma once

// The help viewer: a separate process that shows one page of the help at an anchor. The real
// one hands the page to the desktop's standard opener, so the user's browser shows it.

#include <QString>

#include <memory>

class HelpViewer
{
public:
    virtual ~HelpViewer() = default;
    // Starts the viewer without waiting for it. False, with a reason, when it didn't start.
    virtual bool ShowPage(const QString& pageFile, const QString& anchor, QString& error) = 0;
};

std::unique_ptr<HelpViewer> CreateHelpViewer();
