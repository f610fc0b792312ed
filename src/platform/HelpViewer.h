#pragma once

// The help viewer: a separate process that shows one page of the help at an anchor, with the
// help's contents page a click away. The real one is the VelmoraHelp program beside ours.

#include <QString>

#include <memory>

class HelpViewer
{
public:
    enum class Failure { None, NoSuchPage, ViewerDidNotStart };

    virtual ~HelpViewer() = default;
    // Starts the viewer without waiting for it.
    virtual Failure ShowPage(const QString& contentsFile, const QString& pageFile,
                             const QString& anchor) = 0;
};

class ProcessLauncher;

// The viewer program that lies in `applicationDir`, started through `launcher`.
std::unique_ptr<HelpViewer> CreateHelpViewer(ProcessLauncher& launcher,
                                             const QString& applicationDir);
